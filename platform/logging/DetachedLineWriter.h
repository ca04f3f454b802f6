#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "platform/foundation/Mutex.h"

namespace quenlet {

// Passes lines to a function that may block. Neither the caller of write() nor the end of the
// process waits for it. Thread-safe; owned by shared pointers.
//
// Lines are passed on in order, one at a time, on a thread that exists only while there are any.
// Lines beyond `mostLinesWaiting`, and those unwritten when the process ends, are dropped silently.
class DetachedLineWriter final : public std::enable_shared_from_this<DetachedLineWriter> {
 public:
  static constexpr std::size_t mostLinesWaiting = 256;

  using Write = std::function<void(const std::string& line)>;

  [[nodiscard]] static std::shared_ptr<DetachedLineWriter> make(Write write);

  void write(std::string line) EXCLUDES(mutex);

 private:
  explicit DetachedLineWriter(Write write) : writeLine(std::move(write)) {}
  void startThread() EXCLUDES(mutex);
  void writeWaiting() EXCLUDES(mutex);

  const Write writeLine;
  Mutex mutex;
  std::deque<std::string> waiting GUARDED_BY(mutex);
  bool hasThread GUARDED_BY(mutex) = false;
};

}  // namespace quenlet
