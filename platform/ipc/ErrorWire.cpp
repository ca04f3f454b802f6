#include "platform/ipc/ErrorWire.h"

#include <optional>
#include <string>
#include <utility>

#include "platform/ipc/ServiceInterface.h"

namespace quenlet {

namespace {

Error::UserInfo readUserInfo(WireReader& reader) {
  Error::UserInfo info;
  for (std::size_t left = reader.dictionary().value_or(0); left > 0; --left) {
    const std::optional<std::string_view> key = reader.string();
    const std::optional<std::string_view> text = reader.string();
    if (!key || !text || info.size() >= ErrorWire::maximumUserInfoEntries) continue;
    info.insert_or_assign(std::string(*key), std::string(*text));
  }
  return info;
}

}  // namespace

void ErrorWire::encode(WireEncoder& encoder, const ErrorPtr& error) {
  if (!error) {
    encoder.null();
    return;
  }
  encoder.object(className).dictionary(3);
  encoder.string("domain").string(error->domain());
  encoder.string("code").integer(error->code());
  encoder.string("userInfo").dictionary(error->userInfo().size());
  for (const auto& [key, text] : error->userInfo()) encoder.string(key).string(text);
}

ErrorPtr ErrorWire::decode(WireReader& reader) {
  if (!reader.atEnd() && reader.nextType() == WireType::null) {
    reader.skip();
    return nullptr;
  }
  std::optional<std::string_view> domain;
  std::optional<std::int64_t> code;
  Error::UserInfo info;
  if (const auto name = reader.object(); name == className) {
    for (std::size_t left = reader.dictionary().value_or(0); left > 0; --left) {
      const std::string_view key = reader.string().value_or("");
      if (key == "domain") {
        domain = reader.string();
      } else if (key == "code") {
        code = reader.integer();
      } else if (key == "userInfo") {
        info = readUserInfo(reader);
      } else {
        reader.skip();
      }
    }
  } else if (name) {
    reader.skip();
  }
  if (!domain || !code) {
    return makeServiceError(ServiceErrorCode::malformedMessage, "the peer's error is not readable");
  }
  return std::make_shared<const Error>(std::string(*domain), *code, std::move(info));
}

}  // namespace quenlet
