#include "platform/ipc/ExportedService.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/ipc/WireToken.h"

namespace quenlet {

namespace {

// Takes a request's operation off the front of its body.
std::optional<std::string_view> takeSelector(std::string_view& body) {
  const std::optional<WireToken> token = WireToken::take(body);
  return token && token->type == WireType::string ? std::optional(token->text) : std::nullopt;
}

// Whether nothing but its size makes a request senseless.
bool isTooLarge(const FrameReader::Frame& message) {
  const auto tooLarge = static_cast<std::int64_t>(ServiceErrorCode::messageTooLarge);
  return message.error && message.error->code() == tooLarge && message.kind == FrameKind::request &&
         message.identifier != 0;
}

}  // namespace

ErrorPtr ExportedService::perform(const FrameReader::Frame& message, const ServiceLimits& limits,
                                  WireReply reply) const {
  // The object refuses a refused peer's request of any size. It only needs the selector.
  const bool isCut = isRefused && isTooLarge(message);
  if (message.error && !isCut) return message.error;
  std::string_view arguments = message.body;
  const std::optional<std::string_view> selector = takeSelector(arguments);
  if (!selector) {
    return isCut ? makeServiceError(ServiceErrorCode::messageTooLarge,
                                    "a program without entitlement may send messages of " +
                                        std::to_string(limits.refusedMessageSizeInBytes) + " bytes")
                 : makeServiceError(ServiceErrorCode::malformedMessage,
                                    "a request does not begin with its operation");
  }
  const auto* parameters = interface ? interface->parameters(*selector, OfReply::no) : nullptr;
  if (parameters == nullptr || !object) {
    return makeServiceError(ServiceErrorCode::unknownOperation,
                            "the service has no such operation");
  }
  if (isRefused) {
    arguments = {};
  } else if (ErrorPtr error = validateWireValues(arguments, *parameters)) {
    return error;
  }
  object->perform(std::string(*selector), WireReader(arguments), std::move(reply));
  return nullptr;
}

bool ExportedService::expectsLongReply(const FrameReader::Frame& message) const {
  std::string_view body = message.body;
  const std::optional<std::string_view> selector = takeSelector(body);
  return selector && interface && interface->expectsLongReplies(*selector);
}

}  // namespace quenlet
