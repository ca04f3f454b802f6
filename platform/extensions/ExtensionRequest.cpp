#include "platform/extensions/ExtensionRequest.h"

#include <utility>

#include "platform/extensions/ExtensionError.h"

namespace quenlet {

ExtensionRequest::ExtensionRequest(std::string operation, Encode encodeArguments,
                                   Completion whenAnswered)
    : selector(std::move(operation)),
      encode(std::move(encodeArguments)),
      completion(std::move(whenAnswered)) {}

ExtensionRequestPtr ExtensionRequest::toStart(Completion whenStarted) {
  return std::make_shared<ExtensionRequest>(std::string(), nullptr, std::move(whenStarted));
}

ExtensionRequest::~ExtensionRequest() {
  fail(makeExtensionError(ExtensionErrorCode::hostGone, "the agent ends"));
}

std::string ExtensionRequest::encodedArguments() const {
  WireEncoder encoder;
  encode(encoder);
  return std::move(encoder).take();
}

void ExtensionRequest::complete(Result<std::string> reply) {
  if (const Completion waiting = std::exchange(completion, nullptr)) waiting(std::move(reply));
}

void ExtensionRequest::fail(ErrorPtr error) {
  complete(Result<std::string>::failure(std::move(error)));
}

void ExtensionRequest::failAll(std::vector<std::shared_ptr<ExtensionRequest>> requests,
                               ErrorPtr error, Scheduler& scheduler) {
  if (requests.empty()) return;
  scheduler.performBlock([requests = std::move(requests), error = std::move(error)] {
    for (const auto& request : requests) request->fail(error);
  });
}

}  // namespace quenlet
