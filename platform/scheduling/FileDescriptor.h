#pragma once

#include <unistd.h>

#include <utility>

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

}  // namespace quenlet
