#include "platform/files/FileReading.h"

#include <cerrno>
#include <system_error>

namespace quenlet {
namespace {

bool isPassingShortage(const Error& error) {
  const std::int64_t code = error.code();
  return error.domain() == PosixErrorDomain &&
         (code == EMFILE || code == ENFILE || code == ENOMEM || code == EAGAIN);
}

}  // namespace

bool isMissingFile(const Error& error) {
  return error.domain() == PosixErrorDomain && error.code() == ENOENT;
}

Result<std::string> readFileOfAtMost(std::uintmax_t maximumSizeInBytes,
                                     const std::filesystem::path& file, DataProxy& dataProxy) {
  const auto tooLarge = [&] {
    return Result<std::string>::failure(makePosixError(EFBIG, "read " + file.filename().string()));
  };
  std::error_code unknown;
  const std::uintmax_t size = std::filesystem::file_size(file, unknown);
  if (!unknown && size > maximumSizeInBytes) return tooLarge();
  Result<std::string> bytes = dataProxy.dataWithContentsOfURL(file).result();
  // It may have grown since.
  if (bytes.ok() && bytes.value().size() > maximumSizeInBytes) return tooLarge();
  return bytes;
}

ErrorPtr whyUnreadable(const std::filesystem::path& file, DataProxy& dataProxy,
                       const std::function<bool()>& waitAWhile) {
  ErrorPtr error;
  do {
    const Result<std::string> bytes = dataProxy.dataWithContentsOfURL(file).result();
    error = bytes.ok() ? nullptr : bytes.error();
  } while (error && isPassingShortage(*error) && waitAWhile());
  return error && isMissingFile(*error) ? nullptr : error;
}

}  // namespace quenlet
