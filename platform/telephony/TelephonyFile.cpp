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
  if (!bytes.ok()) {
    const ErrorPtr& error = bytes.error();
    return isMissingFile(*error) ? Object::success(std::nullopt) : Object::failure(error);
  }
  Result<PropertyList> object = PropertyListSerializer::objectWithData(bytes.value());
  if (!object.ok()) return Object::failure(object.error());
  return Object::success(std::move(object).takeValue());
}

ErrorPtr TelephonyFile::damage(std::string sentence) {
  return makeError(TelephonyErrorDomain, 1, std::move(sentence));
}

}  // namespace quenlet
