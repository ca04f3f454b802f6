#include "platform/logging/StandardErrorLogSink.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace quenlet {
namespace {

constexpr std::chrono::milliseconds gatheringTime(2);
constexpr int mostLinesAtOnce = 32;
constexpr std::size_t mostGatheredBytes = std::size_t{64} << 10;

void writeToStandardError(std::string_view text) {
  constexpr int patienceMilliseconds = 1000;
  while (!text.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    if (written > 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
      continue;
    }
    pollfd writable{STDERR_FILENO, POLLOUT, 0};
    const bool mayTryAgain =
        errno == EINTR || (errno == EAGAIN && ::poll(&writable, 1, patienceMilliseconds) > 0);
    if (!mayTryAgain) return;
  }
}

}  // namespace

void StandardErrorLogSink::write(const std::string& line) {
  {
    MutexLock lock(mutex);
    gathered.append(line) += '\n';
    if (gathered.size() >= mostGatheredBytes) writeGathered();
    if (flushComes) return;
    if (++linesSinceBegin <= mostLinesAtOnce || beginAnew()) return writeGathered();
    flushComes = true;
  }
  later(std::chrono::duration<double>(gatheringTime).count(),
        [self = shared_from_this()] { self->flush(); });
}

// Whether the time in which the lines so far were counted is over.
bool StandardErrorLogSink::beginAnew() {
  const auto now = std::chrono::steady_clock::now();
  if (now - begin < gatheringTime) return false;
  begin = now;
  linesSinceBegin = 1;
  return true;
}

void StandardErrorLogSink::flush() {
  MutexLock lock(mutex);
  flushComes = false;
  writeGathered();
}

void StandardErrorLogSink::writeGathered() {
  writeToStandardError(gathered);
  gathered.clear();
}

}  // namespace quenlet
