#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "platform/foundation/Mutex.h"

namespace quenlet {

// Writes lines to file descriptors on its own thread, so that a slow or absent reader blocks
// nobody. Thread-safe.
//
// Lines of all descriptors go out in the order in which they came. Up to 1 MiB waits; lines beyond
// that are dropped and counted, and once there is room again a line on each descriptor says how
// many are missing. Lines that come within a few milliseconds of each other share a write, which
// keeps a burst cheap. The thread sleeps while there is nothing to write.
class DetachedStreams final : public std::enable_shared_from_this<DetachedStreams> {
 public:
  static constexpr std::size_t mostBytesWaiting = std::size_t{1} << 20;

  // Throws std::system_error when the thread cannot be started. The thread lives until the process
  // ends.
  [[nodiscard]] static std::shared_ptr<DetachedStreams> make();

  // `line` comes without its line break. Returns at once.
  void writeLine(int descriptor, std::string_view line) EXCLUDES(mutex);
  // Waits until no line is left to write, for `patience` at most. False when some are left.
  bool drain(std::chrono::milliseconds patience) EXCLUDES(mutex);

  // Writes all of `text` on the calling thread, however long that takes. Gives up on an error that
  // a retry cannot cure.
  static void writeWhole(int descriptor, std::string_view text);

 private:
  // Successive lines for one descriptor.
  struct Piece final {
    int descriptor;
    std::string text;
  };

  DetachedStreams() = default;
  static void append(std::deque<Piece>& pieces, int descriptor, std::string_view line);
  void work() EXCLUDES(mutex);
  void gather() EXCLUDES(mutex);
  [[nodiscard]] std::deque<Piece> takeWaiting() EXCLUDES(mutex);

  Mutex mutex;
  ConditionVariable changed;
  std::deque<Piece> waiting GUARDED_BY(mutex);
  std::size_t bytesWaiting GUARDED_BY(mutex) = 0;
  // How many lines were dropped, by descriptor, since room was last made.
  std::map<int, std::uint64_t> dropped GUARDED_BY(mutex);
  bool isIdle GUARDED_BY(mutex) = false;
};

}  // namespace quenlet
