#include "platform/ipc/TimeLimit.h"

#include <poll.h>

#include <algorithm>
#include <limits>
#include <sstream>

#include "platform/ipc/ServiceInterface.h"

namespace quenlet {

namespace {

// As good as unlimited, and far from where a time_point overflows.
constexpr std::chrono::milliseconds longestLimit = std::chrono::hours(24 * 365);

}  // namespace

TimeLimit::TimeLimit(std::chrono::milliseconds mostWaited)
    : limit(std::min(mostWaited, longestLimit)) {}

TimeLimit::Instant TimeLimit::deadline() const { return std::chrono::steady_clock::now() + limit; }

ErrorPtr TimeLimit::passed() const {
  std::ostringstream sentence;
  sentence << "the service did not answer within " << std::chrono::duration<double>(limit).count()
           << " seconds";
  return makeServiceError(ServiceErrorCode::timedOut, sentence.str());
}

int TimeLimit::readyEvents(int socket, int events, Instant deadline) {
  // Rounded up: with 0 ms, callers would spin until the deadline.
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
  pollfd look{socket, static_cast<short>(events), 0};
  const auto most = static_cast<std::int64_t>(std::numeric_limits<int>::max());
  const auto wait = std::clamp<std::int64_t>(left.count(), 0, most);
  return ::poll(&look, 1, static_cast<int>(wait)) > 0 ? look.revents : 0;
}

}  // namespace quenlet
