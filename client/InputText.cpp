#include "client/InputText.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/foundation/FileDescriptor.h"

namespace quenlet {
namespace {

// One byte beyond the limit is enough to see that the text is too large.
Result<std::string> readAll(int descriptor, const std::string& path, std::size_t mostBytes) {
  return readAtMost(
      mostBytes + 1,
      [descriptor](char* room, std::size_t size) { return ::read(descriptor, room, size); },
      "read " + path);
}

}  // namespace

Result<std::string> readInput(const std::string& path, std::size_t mostBytes) {
  if (path == "-") return readAll(STDIN_FILENO, path, mostBytes);
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) return Result<std::string>::failure(makePosixError(errno, "open " + path));
  return readAll(file.get(), path, mostBytes);
}

}  // namespace quenlet
