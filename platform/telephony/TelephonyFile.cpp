#include "platform/telephony/TelephonyFile.h"

#include <utility>

#include "platform/files/FileReading.h"
#include "platform/foundation/PropertyListSerializer.h"

namespace quenlet {

Result<std::string> TelephonyFile::readBytes(DataProxy& dataProxy,
                                             const std::filesystem::path& file) {
  return readFileOfAtMost(maximumSizeInBytes, file, dataProxy);
}

Result<std::optional<PropertyList>> TelephonyFile::read(DataProxy& dataProxy,
                                                        const std::filesystem::path& file) {
  using Object = Result<std::optional<PropertyList>>;
  const Result<std::string> bytes = readBytes(dataProxy, file);
  if (!bytes.isLeft()) {
    const ErrorPtr& error = bytes.right();
    return isMissingFile(*error) ? Object::left(std::nullopt) : Object::right(error);
  }
  Result<PropertyList> object = PropertyListSerializer::objectWithData(bytes.left());
  if (!object.isLeft()) return Object::right(object.right());
  return Object::left(std::move(object).takeLeft());
}

ErrorPtr TelephonyFile::damage(std::string sentence) {
  return makeError(TelephonyErrorDomain, 1, std::move(sentence));
}

}  // namespace quenlet
