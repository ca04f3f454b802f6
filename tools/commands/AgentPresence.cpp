#include "tools/commands/AgentPresence.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

#include "platform/files/DirectoryWatch.h"

namespace quenlet {

AgentPresence::AgentPresence(EventLoop& eventLoop, ServiceAddress agentAddress, Pause pause,
                             Handler onChange)
    : loop(eventLoop),
      address(std::move(agentAddress)),
      waitFor(std::move(pause)),
      changed(std::move(onChange)) {
  // Before the first look: an agent that appears in between is not missed.
  directoryWatch =
      DirectoryWatch::watchDirectory(loop, address.socketPath().parent_path(),
                                     [this](const std::string& name) { noticeEntry(name); });
  connect();
}

AgentPresence::~AgentPresence() {
  directoryWatch->cancel();
  if (watch) watch->cancel();
}

void AgentPresence::connect() {
  constexpr int mostAttempts = 5;
  constexpr std::chrono::milliseconds pauseBetweenAttempts(20);
  for (int attempt = 1;; ++attempt) {
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const TimeLimit limit(std::chrono::seconds(1));
    const int failure = socket.isOpen() ? address.connect(socket.get(), limit.deadline()) : errno;
    if (failure == 0) {
      connection = std::move(socket);
      since = std::chrono::steady_clock::now();
      break;
    }
    // The name of a socket appears a moment before anybody listens.
    if (failure != ECONNREFUSED || attempt == mostAttempts) return;
    waitFor(pauseBetweenAttempts);
  }
  watch = loop.watch(connection.get(), EPOLLRDHUP, [this](std::uint32_t) { noticeEnd(); });
}

void AgentPresence::noticeEntry(const std::string& name) {
  const bool concernsAgent = name.empty() || name == address.socketPath().filename();
  if (isThere() || !concernsAgent) return;
  connect();
  if (isThere()) changed(true);
}

void AgentPresence::noticeEnd() {
  // An agent that ends takes connections for a moment longer. One with too many of them goes on
  // without this one, ends each at once, and is not to be asked all the time.
  constexpr std::chrono::milliseconds pauseBeforeNextLook(100);
  constexpr std::chrono::seconds longestRefusal(1);
  const bool wasRefused = std::chrono::steady_clock::now() - since < longestRefusal;
  watch->cancel();
  watch = nullptr;
  connection = FileDescriptor();
  waitFor(pauseBeforeNextLook);
  connect();
  // A service manager keeps the socket open between two agents.
  if (!isThere() || !wasRefused) changed(isThere());
}

}  // namespace quenlet
