#include "platform/ipc/HandedSockets.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/foundation/StandardStreams.h"

namespace quenlet {
namespace {

constexpr int firstDescriptor = STDERR_FILENO + 1;

std::optional<int> takeNumber(const char* variable) {
  const char* const value = std::getenv(variable);
  const std::string text = value == nullptr ? "" : value;
  ::unsetenv(variable);
  int number = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isWhole = failure == std::errc() && end == text.data() + text.size();
  return isWhole ? std::optional(number) : std::nullopt;
}

void sayUnused(int descriptor, std::string_view reason) {
  StandardStreams::writeError("quenlet: descriptor " + std::to_string(descriptor) +
                              " was handed over, but is useless: " + std::string(reason));
}

std::optional<int> optionOf(int socket, int option) {
  int value = 0;
  socklen_t size = sizeof(value);
  if (::getsockopt(socket, SOL_SOCKET, option, &value, &size) != 0) return std::nullopt;
  return value;
}

// Why the descriptor is not what clients of `address` reach; empty if it is.
std::string_view faultOf(int descriptor, const ServiceAddress& address) {
  if (optionOf(descriptor, SO_DOMAIN) != AF_UNIX || optionOf(descriptor, SO_TYPE) != SOCK_STREAM) {
    return "it is not a Unix stream socket";
  }
  if (optionOf(descriptor, SO_ACCEPTCONN) != 1) return "it does not listen";
  if (!address.isWhereBound(descriptor)) return "it is not bound to the path of the service";
  return {};
}

}  // namespace

HandedSockets HandedSockets::fromEnvironment() {
  const std::optional<int> process = takeNumber("LISTEN_PID");
  const std::optional<int> count = takeNumber("LISTEN_FDS");
  // The names say nothing that the sockets' addresses do not say for certain.
  ::unsetenv("LISTEN_FDNAMES");
  ::unsetenv("LISTEN_PIDFDID");
  HandedSockets sockets;
  if (process != ::getpid()) return sockets;
  if (!count) StandardStreams::writeError("quenlet: LISTEN_FDS is not a number");
  for (int index = 0; index < count.value_or(0); ++index) {
    const int descriptor = firstDescriptor + index;
    if (::fcntl(descriptor, F_SETFD, FD_CLOEXEC) != 0) {
      // However many more there are said to be.
      sayUnused(descriptor, "it is not open");
      break;
    }
    sockets.descriptors.emplace_back(descriptor);
  }
  return sockets;
}

FileDescriptor HandedSockets::takeListening(const ServiceAddress& address) {
  FileDescriptor found;
  for (FileDescriptor& descriptor : std::exchange(descriptors, {})) {
    const std::string_view fault = faultOf(descriptor.get(), address);
    if (!fault.empty()) {
      sayUnused(descriptor.get(), fault);
    } else if (found.isOpen()) {
      sayUnused(descriptor.get(), "another one listens at the same path");
    } else {
      found = std::move(descriptor);
    }
  }
  return found;
}

}  // namespace quenlet
