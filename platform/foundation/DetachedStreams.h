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

// Writes lines to file descriptors on a thread of its own, so that nobody waits for whoever reads
// there, or does not. Thread-safe.
//
// Lines of all descriptors go out in the order in which they came. Up to 1 MiB waits; what comes
// beyond is dropped and counted, and when there is room again one line says how many are missing.
// Those that come within a few milliseconds of each other share a write, so that a line costs next
// to nothing when there are most of them, and nothing wakes up while there are none.
class DetachedStreams final : public std::enable_shared_from_this<DetachedStreams> {
 public:
  static constexpr std::size_t mostBytesWaiting = std::size_t{1} << 20;

  // Throws std::system_error when no thread is to be had. The thread lives until the process ends.
  [[nodiscard]] static std::shared_ptr<DetachedStreams> make();

  // `line` comes without its line break. Returns at once.
  void writeLine(int descriptor, std::string_view line) EXCLUDES(mutex);
  // Waits until all lines so far are written, `patience` at most. False when some are not.
  bool drain(std::chrono::milliseconds patience) EXCLUDES(mutex);

  // Writes a text in full on the calling thread, for as long as it takes; what the descriptor
  // refuses for good is dropped.
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
