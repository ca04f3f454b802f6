#include "platform/ipc/ServiceInterface.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <utility>

#include "platform/foundation/Text.h"
#include "platform/ipc/WireToken.h"

namespace quenlet {

namespace {

ErrorPtr malformed(const char* sentence) {
  return makeServiceError(ServiceErrorCode::malformedMessage, sentence);
}

ErrorPtr invalid(const char* sentence) {
  return makeServiceError(ServiceErrorCode::invalidArguments, sentence);
}

// The containers around the next value. A fixed array instead of recursion: a hostile message can
// neither overflow the stack nor make us allocate.
class OpenContainers final {
 public:
  [[nodiscard]] bool empty() const { return depth == 0; }
  // Whether the next value is a dictionary's key.
  [[nodiscard]] bool expectKey() const {
    return depth > 0 && stack[depth - 1].pairs && stack[depth - 1].left % 2 == 0;
  }
  // Counts a value, and opens it if it is a container's head. False beyond the nesting limit.
  [[nodiscard]] bool add(const WireToken& token) {
    if (depth > 0) --stack[depth - 1].left;
    if (token.isHead()) {
      if (depth == stack.size()) return false;
      stack[depth++] = {token.number, token.type == WireType::dictionary};
    }
    while (depth > 0 && stack[depth - 1].left == 0) --depth;
    return true;
  }

 private:
  struct Container final {
    std::uint64_t left;
    bool pairs;
  };
  std::array<Container, maximumWireNesting> stack;
  std::size_t depth = 0;
};

ErrorPtr checkToken(const WireToken& token, const WireParameter& parameter) {
  switch (token.type) {
    case WireType::string:
      return isValidUTF8(token.text) ? nullptr : malformed("a text is not valid UTF-8");
    case WireType::date:
      return std::isfinite(std::bit_cast<double>(token.number)) ? nullptr
                                                                : malformed("a date is not finite");
    case WireType::object:
      return parameter.classes.contains(token.text)
                 ? nullptr
                 : invalid("an object has a class that is not allowed there");
    default:
      return nullptr;
  }
}

ErrorPtr validateValue(std::string_view& rest, const WireParameter& parameter) {
  OpenContainers open;
  do {
    const std::optional<WireToken> token = WireToken::take(rest);
    if (!token) return malformed("a value is unknown or incomplete");
    if (open.expectKey() && token->type != WireType::string) {
      return malformed("a dictionary's key is not a text");
    }
    if (ErrorPtr error = checkToken(*token, parameter)) return error;
    if (!open.add(*token)) return malformed("values are nested too deeply");
  } while (!open.empty());
  return nullptr;
}

bool hasRightType(std::string_view rest, const WireParameter& parameter) {
  const auto type = static_cast<std::uint8_t>(rest.front());
  return type == static_cast<std::uint8_t>(parameter.type) ||
         (parameter.nullable && type == static_cast<std::uint8_t>(WireType::null));
}

}  // namespace

ErrorPtr makeServiceError(ServiceErrorCode code, std::string debugDescription) {
  return makeError(ServiceErrorDomain, static_cast<std::int64_t>(code),
                   std::move(debugDescription));
}

ServiceInterface::Operations& ServiceInterface::ownOperations() {
  if (operations.use_count() > 1) operations = std::make_shared<Operations>(*operations);
  return *operations;
}

ServiceInterface& ServiceInterface::addOperation(std::string selector,
                                                 std::vector<WireParameter> arguments,
                                                 std::vector<WireParameter> reply) {
  ownOperations().insert_or_assign(std::move(selector),
                                   Operation{std::move(arguments), std::move(reply)});
  return *this;
}

ServiceInterface& ServiceInterface::expectLongReplies(std::string_view selector) {
  ownOperations().find(selector)->second.hasLongReplies = true;
  return *this;
}

bool ServiceInterface::expectsLongReplies(std::string_view selector) const {
  const auto found = operations->find(selector);
  return found != operations->end() && found->second.hasLongReplies;
}

const std::set<std::string, std::less<>>& ServiceInterface::classesForSelector(
    std::string_view selector, std::size_t argumentIndex, OfReply ofReply) const {
  const Operation& operation = operations->find(selector)->second;
  return (ofReply == OfReply::yes ? operation.reply : operation.arguments)
      .at(argumentIndex)
      .classes;
}

void ServiceInterface::setClasses(std::set<std::string, std::less<>> classes,
                                  std::string_view forSelector, std::size_t argumentIndex,
                                  OfReply ofReply) {
  Operation& operation = ownOperations().find(forSelector)->second;
  (ofReply == OfReply::yes ? operation.reply : operation.arguments).at(argumentIndex).classes =
      std::move(classes);
}

const std::vector<WireParameter>* ServiceInterface::parameters(std::string_view selector,
                                                               OfReply ofReply) const {
  const auto found = operations->find(selector);
  if (found == operations->end()) return nullptr;
  return ofReply == OfReply::yes ? &found->second.reply : &found->second.arguments;
}

ErrorPtr validateWireValues(std::string_view bytes, const std::vector<WireParameter>& parameters) {
  std::string_view rest = bytes;
  for (const WireParameter& parameter : parameters) {
    if (rest.empty()) return invalid("there are too few values");
    if (!hasRightType(rest, parameter)) return invalid("a value has the wrong type");
    if (ErrorPtr error = validateValue(rest, parameter)) return error;
  }
  return rest.empty() ? nullptr : invalid("there are too many values");
}

}  // namespace quenlet
