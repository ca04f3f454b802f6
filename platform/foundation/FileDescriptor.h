#pragma once

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

#include "quenlet/Result.h"

namespace quenlet {

// Owns one open file descriptor and closes it at the end. Movable; not thread-safe. Ignores errors
// of close(): a writer that needs its bytes durable calls fsync() first.
class FileDescriptor final {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int owned) : descriptor(owned) {}
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  ~FileDescriptor() { reset(); }

  // -1 when nothing is owned.
  [[nodiscard]] int get() const { return descriptor; }
  [[nodiscard]] bool isOpen() const { return descriptor >= 0; }
  // Gives the descriptor to the caller, who closes it.
  [[nodiscard]] int release() { return std::exchange(descriptor, -1); }
  void reset(int replacement = -1) {
    if (descriptor >= 0) ::close(descriptor);
    descriptor = replacement;
  }

 private:
  int descriptor = -1;
};

// What `read`, called like ::read() without its first argument, gives up to its end, but not more
// than `mostBytes`, even if the file grows meanwhile. Room for `expectedBytes` is made at once. An
// error of its errno, for `action`.
template <typename Read>
[[nodiscard]] Result<std::string> readAtMost(std::size_t mostBytes, const Read& read,
                                             const std::string& action,
                                             std::size_t expectedBytes = 0) {
  constexpr std::size_t pieceInBytes = 65536;
  std::string bytes;
  // One byte more, in which the end is found.
  const std::size_t ready = std::min(mostBytes, std::max(expectedBytes + 1, pieceInBytes));
  bytes.reserve(ready);
  std::size_t held = 0;
  while (held < mostBytes) {
    const std::size_t end = held + pieceInBytes;
    bytes.resize(std::min(held < ready ? ready : mostBytes, end));
    const ssize_t count = read(bytes.data() + held, bytes.size() - held);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Result<std::string>::failure(makePosixError(errno, action));
    if (count == 0) break;
    held += static_cast<std::size_t>(count);
  }
  bytes.resize(held);
  return Result<std::string>::success(std::move(bytes));
}

}  // namespace quenlet
