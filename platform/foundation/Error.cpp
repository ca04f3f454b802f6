#include "quenlet/Error.h"

#include <system_error>

namespace quenlet {

std::string Error::debugDescription() const {
  const auto found = info.find(DebugDescriptionKey);
  return found == info.end() ? std::string() : found->second;
}

std::string Error::description() const {
  std::string text = domainName + " " + std::to_string(codeNumber);
  if (const std::string sentence = debugDescription(); !sentence.empty()) text += ": " + sentence;
  return text;
}

ErrorPtr makeError(std::string domain, std::int64_t code, std::string debugDescription) {
  Error::UserInfo info;
  if (!debugDescription.empty()) info.emplace(DebugDescriptionKey, std::move(debugDescription));
  return std::make_shared<const Error>(std::move(domain), code, std::move(info));
}

ErrorPtr makePosixError(int errorNumber, const std::string& action) {
  return makeError(PosixErrorDomain, errorNumber,
                   action + ": " + std::generic_category().message(errorNumber));
}

}  // namespace quenlet
