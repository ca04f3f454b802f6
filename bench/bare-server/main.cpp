// The least that can answer over a Unix socket: one thread, epoll, replies of a fixed size to
// requests of a fixed size. The floor for the agent's launch, connections and memory.

#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_map>

namespace {

int listenAt(const char* path) {
  const int listening = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
  if (::bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(listening, SOMAXCONN) != 0) {
    std::exit(1);
  }
  return listening;
}

void watch(int epoll, int socket) {
  epoll_event event{.events = EPOLLIN, .data = {.fd = socket}};
  ::epoll_ctl(epoll, EPOLL_CTL_ADD, socket, &event);
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc != 4) return 2;
  const std::size_t requestSize = std::strtoul(argv[2], nullptr, 10);
  const std::string reply(std::strtoul(argv[3], nullptr, 10), 'r');
  const int listening = listenAt(argv[1]);
  const int epoll = ::epoll_create1(EPOLL_CLOEXEC);
  watch(epoll, listening);
  std::unordered_map<int, std::size_t> received;
  std::array<char, 16384> buffer;
  std::array<epoll_event, 64> events;
  while (true) {
    const int ready = ::epoll_wait(epoll, events.data(), events.size(), -1);
    for (int i = 0; i < ready; ++i) {
      const int socket = events[i].data.fd;
      if (socket == listening) {
        const int accepted = ::accept4(listening, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (accepted >= 0) watch(epoll, accepted);
        continue;
      }
      const ssize_t count = ::recv(socket, buffer.data(), buffer.size(), 0);
      if (count <= 0) {
        received.erase(socket);
        ::close(socket);
        continue;
      }
      std::size_t& bytes = received[socket];
      for (bytes += static_cast<std::size_t>(count); bytes >= requestSize; bytes -= requestSize) {
        ::send(socket, reply.data(), reply.size(), MSG_NOSIGNAL);
      }
    }
  }
}
