#pragma once

#include <chrono>
#include <string_view>

namespace quenlet {

// Writes lines to this process's standard output and standard error. Lines of different threads do
// not mix; `line` comes without its line break. Thread-safe.
//
// By default a line is written at once, and the caller waits until the reader takes it: right for a
// program that ends by itself. A service calls detach(), so that none of its threads ever waits for
// a reader (see DetachedStreams).
class StandardStreams final {
 public:
  StandardStreams() = delete;

  static void writeOutput(std::string_view line);
  static void writeError(std::string_view line);

  // From now on lines go out on a separate thread. Further calls have no effect. Throws
  // std::system_error when the thread cannot be started.
  static void detach();
  // Before the process ends: gives detached lines up to `patience` to go out.
  static void drain(std::chrono::milliseconds patience);
};

}  // namespace quenlet
