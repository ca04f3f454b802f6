#include "platform/foundation/DetachedStreams.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <thread>
#include <utility>

namespace quenlet {
namespace {

// A thread that wakes takes the core from a request. At 2 ms the log held up one in 150 of a busy
// client's fetches.
constexpr std::chrono::milliseconds gatheringTime(5);
// So many bytes do not wait for more, long before lines have to be dropped.
constexpr std::size_t enoughBytes = DetachedStreams::mostBytesWaiting / 4;

// "1,204"
std::string inThousands(std::uint64_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t place = digits.size(); place > 3; place -= 3) digits.insert(place - 3, 1, ',');
  return digits;
}

}  // namespace

std::shared_ptr<DetachedStreams> DetachedStreams::make() {
  std::shared_ptr<DetachedStreams> made(new DetachedStreams);
  std::thread([made] { made->work(); }).detach();
  return made;
}

void DetachedStreams::writeLine(int descriptor, std::string_view line) {
  {
    MutexLock lock(mutex);
    if (bytesWaiting + line.size() >= mostBytesWaiting) {
      ++dropped[descriptor];
      return;
    }
    const bool hadEnough = bytesWaiting >= enoughBytes;
    bytesWaiting += line.size() + 1;
    append(waiting, descriptor, line);
    const bool isDue = !hadEnough && bytesWaiting >= enoughBytes;
    if (!isIdle && !isDue) return;
  }
  // Without the lock, which the thread that wakes needs.
  changed.notifyAll();
}

bool DetachedStreams::drain(std::chrono::milliseconds patience) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  MutexLock lock(mutex);
  while (!waiting.empty() || !isIdle) {
    if (!changed.waitUntil(mutex, deadline)) return waiting.empty() && isIdle;
  }
  return true;
}

void DetachedStreams::append(std::deque<Piece>& pieces, int descriptor, std::string_view line) {
  if (pieces.empty() || pieces.back().descriptor != descriptor) pieces.push_back({descriptor, {}});
  pieces.back().text.append(line) += '\n';
}

void DetachedStreams::work() {
  while (true) {
    for (const Piece& piece : takeWaiting()) writeWhole(piece.descriptor, piece.text);
    gather();
  }
}

// Lines that come during this pause share the next write; enough of them end it.
void DetachedStreams::gather() {
  const auto deadline = std::chrono::steady_clock::now() + gatheringTime;
  MutexLock lock(mutex);
  while (bytesWaiting < enoughBytes && changed.waitUntil(mutex, deadline)) continue;
}

std::deque<DetachedStreams::Piece> DetachedStreams::takeWaiting() {
  MutexLock lock(mutex);
  // Idle means that all lines are written, not just taken: drain() waits for that. writeLine()
  // wakes an idle thread with a line, and one that gathers with enough of them.
  isIdle = waiting.empty();
  if (isIdle) changed.notifyAll();
  while (waiting.empty()) changed.wait(mutex);
  isIdle = false;
  bytesWaiting = 0;
  std::deque<Piece> taken = std::exchange(waiting, {});
  for (const auto& [descriptor, count] : std::exchange(dropped, {})) {
    append(taken, descriptor, "quenlet: dropped " + inThousands(count) + " lines");
  }
  return taken;
}

void DetachedStreams::writeWhole(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written > 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
      continue;
    }
    // A process that shares the descriptor may have made it non-blocking: wait instead of losing
    // lines.
    pollfd writable{descriptor, POLLOUT, 0};
    const bool mayTryAgain =
        written < 0 &&
        (errno == EINTR || (errno == EAGAIN && (::poll(&writable, 1, -1) > 0 || errno == EINTR)));
    if (!mayTryAgain) return;
  }
}

}  // namespace quenlet
