#include "platform/telephony/TelephonyFile.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/foundation/PropertyListSerializer.h"

namespace quenlet {

Result<std::string> TelephonyFile::readBytes(DataProxy& dataProxy,
                                             const std::filesystem::path& file) {
  const auto tooLarge = [&] {
    return Result<std::string>::right(makePosixError(EFBIG, "read " + file.filename().string()));
  };
  std::error_code unknown;
  const std::uintmax_t size = std::filesystem::file_size(file, unknown);
  if (!unknown && size > maximumSizeInBytes) return tooLarge();
  Result<std::string> bytes = dataProxy.dataWithContentsOfURL(file).result();
  if (bytes.isLeft() && bytes.left().size() > maximumSizeInBytes) return tooLarge();
  return bytes;
}

Result<std::optional<PropertyList>> TelephonyFile::read(DataProxy& dataProxy,
                                                        const std::filesystem::path& file) {
  using Object = Result<std::optional<PropertyList>>;
  const Result<std::string> bytes = readBytes(dataProxy, file);
  if (!bytes.isLeft()) {
    const ErrorPtr& error = bytes.right();
    const bool isMissing = error->domain() == PosixErrorDomain && error->code() == ENOENT;
    return isMissing ? Object::left(std::nullopt) : Object::right(error);
  }
  Result<PropertyList> object = PropertyListSerializer::objectWithData(bytes.left());
  if (!object.isLeft()) return Object::right(object.right());
  return Object::left(std::move(object).takeLeft());
}

ErrorPtr TelephonyFile::damage(std::string sentence) {
  return makeError(TelephonyErrorDomain, 1, std::move(sentence));
}

}  // namespace quenlet
