#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "platform/foundation/Mutex.h"

namespace quenlet {

// Hands lines to a function that may take its time, so that nobody waits for it: neither who writes
// a line nor the end of the process. Thread-safe; held by a shared pointer.
//
// The lines are handed over in their order, one at a time, on a thread that exists only while there
// are any. Of lines that come while too many wait, and of those left when the process ends, nothing
// is told.
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
