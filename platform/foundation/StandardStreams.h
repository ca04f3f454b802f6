#pragma once

#include <chrono>
#include <string_view>

namespace quenlet {

// The lines that this process writes to its standard output and standard error. Those of several
// threads do not mix; `line` comes without its line break. Thread-safe.
//
// A program that ends by itself writes them at once, and waits until they are taken. A service
// detaches its streams, so that none of its threads ever waits for a reader (see DetachedStreams).
class StandardStreams final {
 public:
  StandardStreams() = delete;

  static void writeOutput(std::string_view line);
  static void writeError(std::string_view line);

  // From now on lines go out on a thread of their own. Once in a process. Throws std::system_error
  // when no thread is to be had.
  static void detach();
  // Gives what is detached `patience` to go out, before the process ends.
  static void drain(std::chrono::milliseconds patience);
};

}  // namespace quenlet
