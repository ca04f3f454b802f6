#include "browser/host/HostProgram.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <string>
#include <utility>

namespace quenlet {
namespace {

// Somebody looks at the form.
const Patience patienceInBrowser(std::chrono::seconds(5), std::chrono::seconds(15));

std::string framed(std::string_view message) {
  const auto length = static_cast<std::uint32_t>(message.size());
  std::string bytes(reinterpret_cast<const char*>(&length), sizeof length);
  return bytes.append(message);
}

}  // namespace

HostProgram::HostProgram(int inputDescriptor, int outputDescriptor)
    : input(inputDescriptor),
      output(outputDescriptor),
      agent(patienceInBrowser),
      watcher(Client::standardTimeLimit, Client::Handlers::inDispatch),
      host(
          agent, [this](std::string_view message) { send(message); },
          [this](std::function<void()> changed) { follow(std::move(changed)); }) {}

ErrorPtr HostProgram::run() {
  std::array<char, MessageReader::mostBytes> buffer{};
  while (!isOver) {
    const auto came = wait();
    if (!came) continue;
    if (*came == Came::changes) {
      watcher.dispatch();
      continue;
    }
    const ssize_t size = ::read(input, buffer.data(), buffer.size());
    if (size == 0) break;
    if (size < 0) {
      if (errno != EINTR) fail(makePosixError(errno, "read a request"));
    } else if (!host.take({buffer.data(), static_cast<std::size_t>(size)})) {
      fail(makeError(PosixErrorDomain, EMSGSIZE, "what came is not a request of the extension"));
    }
  }
  return failure;
}

std::optional<HostProgram::Came> HostProgram::wait() {
  std::array<pollfd, 2> places{{{input, POLLIN, 0}, {changesDescriptor.value_or(-1), POLLIN, 0}}};
  if (::poll(places.data(), places.size(), -1) < 0) {
    if (errno != EINTR) fail(makePosixError(errno, "wait for a request"));
    return std::nullopt;
  }
  return places[0].revents != 0 ? Came::requests : Came::changes;
}

void HostProgram::send(std::string_view message) {
  const std::string bytes = framed(message);
  std::string_view rest = bytes;
  while (!rest.empty() && !isOver) {
    const ssize_t size = ::write(output, rest.data(), rest.size());
    if (size >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(size));
    } else if (errno == EPIPE) {
      isOver = true;
    } else if (errno != EINTR) {
      fail(makePosixError(errno, "write an answer"));
    }
  }
}

void HostProgram::follow(std::function<void()> changed) {
  const Result<int> descriptor = watcher.fd();
  if (!descriptor.ok()) return fail(descriptor.error());
  changesDescriptor = descriptor.value();
  // The first is the card as it is, which may have changed since it was asked for.
  watcher.onCardChange([changed = std::move(changed)](const auto&) { changed(); });
}

void HostProgram::fail(ErrorPtr error) {
  if (!failure) failure = std::move(error);
  isOver = true;
}

}  // namespace quenlet
