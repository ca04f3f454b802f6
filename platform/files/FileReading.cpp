#include "platform/files/FileReading.h"

#include <cerrno>
#include <system_error>

namespace quenlet {

bool isMissingFile(const Error& error) {
  return error.domain() == PosixErrorDomain && error.code() == ENOENT;
}

Result<std::string> readFileOfAtMost(std::uintmax_t maximumSizeInBytes,
                                     const std::filesystem::path& file, DataProxy& dataProxy) {
  const auto tooLarge = [&] {
    return Result<std::string>::right(makePosixError(EFBIG, "read " + file.filename().string()));
  };
  std::error_code unknown;
  const std::uintmax_t size = std::filesystem::file_size(file, unknown);
  if (!unknown && size > maximumSizeInBytes) return tooLarge();
  Result<std::string> bytes = dataProxy.dataWithContentsOfURL(file).result();
  // It may have grown.
  if (bytes.isLeft() && bytes.left().size() > maximumSizeInBytes) return tooLarge();
  return bytes;
}

}  // namespace quenlet
