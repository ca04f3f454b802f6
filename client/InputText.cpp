#include "client/InputText.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "platform/foundation/FileDescriptor.h"

namespace quenlet {
namespace {

Result<std::string> readAll(int descriptor, const std::string& path, std::size_t mostBytes) {
  std::string text;
  std::array<char, 65536> block;
  while (text.size() <= mostBytes) {
    const ssize_t count = ::read(descriptor, block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Result<std::string>::failure(makePosixError(errno, "read " + path));
    if (count == 0) break;
    text.append(block.data(), static_cast<std::size_t>(count));
  }
  return Result<std::string>::success(std::move(text));
}

}  // namespace

Result<std::string> readInput(const std::string& path, std::size_t mostBytes) {
  if (path == "-") return readAll(STDIN_FILENO, path, mostBytes);
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) return Result<std::string>::failure(makePosixError(errno, "open " + path));
  return readAll(file.get(), path, mostBytes);
}

}  // namespace quenlet
