#include "platform/notifications/NotificationReceiver.h"

#include <sys/epoll.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <utility>

#include "platform/foundation/Text.h"
#include "platform/scheduling/attachedDescriptors.h"

namespace quenlet {
namespace {

constexpr int datagramsPerTurn = 64;  // then other handlers of the loop get a turn

// The process identifier is for people who look into the directory. Thanks to the random part no
// name is used twice, so removing a stale socket cannot hit a new one.
Result<std::string> newSocketName() {
  std::array<std::uint8_t, 16> random{};
  if (::getrandom(random.data(), random.size(), 0) != static_cast<ssize_t>(random.size())) {
    return Result<std::string>::failure(makePosixError(errno, "get random bytes"));
  }
  std::string name = std::to_string(::getpid()) + "-";
  for (const std::uint8_t byte : random) {
    name += "0123456789abcdef"[byte >> 4];
    name += "0123456789abcdef"[byte & 15];
  }
  return Result<std::string>::success(std::move(name));
}

}  // namespace

bool NotificationReceiver::isNotificationName(std::string_view text) {
  return !text.empty() && text.size() <= maximumNameSizeInBytes && isValidUTF8(text);
}

Result<std::shared_ptr<NotificationReceiver>> NotificationReceiver::open(
    EventLoop& eventLoop, const std::filesystem::path& directoryPath,
    std::function<void(const std::string& name)> onName) {
  using Opened = Result<std::shared_ptr<NotificationReceiver>>;
  Result<NotificationDirectory> directory = NotificationDirectory::open(directoryPath);
  if (!directory.ok()) return Opened::failure(directory.error());
  const Result<std::string> name = newSocketName();
  if (!name.ok()) return Opened::failure(name.error());
  Result<FileDescriptor> socket = directory.value().bindSocket(name.value());
  if (!socket.ok()) return Opened::failure(socket.error());
  const std::shared_ptr<NotificationReceiver> receiver(
      new NotificationReceiver(std::move(directory).takeValue(), name.value(),
                               std::move(socket).takeValue(), std::move(onName)));
  receiver->watchSocket(eventLoop);
  return Opened::success(receiver);
}

NotificationReceiver::NotificationReceiver(NotificationDirectory directory, std::string socketName,
                                           FileDescriptor bound,
                                           std::function<void(const std::string& name)> onName)
    : parent(std::make_shared<const NotificationDirectory>(std::move(directory))),
      name(std::move(socketName)),
      take(std::move(onName)),
      socket(std::make_shared<const FileDescriptor>(std::move(bound))) {}

NotificationReceiver::~NotificationReceiver() { close(); }

void NotificationReceiver::watchSocket(EventLoop& eventLoop) {
  MutexLock lock(mutex);
  refusesDescriptors = refuseDescriptors(socket->get());
  watch = eventLoop.watch(socket->get(), EPOLLIN, [weak = weak_from_this()](std::uint32_t) {
    if (const auto self = weak.lock()) self->receive();
  });
}

void NotificationReceiver::close() {
  MutexLock lock(mutex);
  if (!socket) return;
  if (watch) watch->cancel();
  parent->removeSocket(name);
  // From here on sends fail. Closing the socket also closes the descriptors of unread datagrams,
  // which may block.
  ::shutdown(socket->get(), SHUT_RD);
  char first = 0;
  if (!refusesDescriptors &&
      ::recv(socket->get(), &first, sizeof first, MSG_DONTWAIT | MSG_PEEK) >= 0) {
    patient.perform([held = std::move(socket)] {});
  }
  socket.reset();
}

// One datagram; nothing when none can be had now.
std::optional<std::string> NotificationReceiver::receiveDatagram() {
  std::array<char, maximumNameSizeInBytes + 1> buffer;  // one more, to notice longer names
  MutexLock lock(mutex);
  if (!socket) return std::nullopt;
  const ssize_t size = refusesDescriptors
                           ? ::recv(socket->get(), buffer.data(), buffer.size(), MSG_DONTWAIT)
                           : receiveWithoutDescriptors(socket->get(), buffer);
  if (size < 0) {
    if (errno == EBADMSG) dropPatiently();
    return std::nullopt;
  }
  return std::string(buffer.data(), static_cast<std::size_t>(size));
}

// Has another thread take the datagram with descriptors, which may block. The socket is paused
// until then.
void NotificationReceiver::dropPatiently() {
  watch->setEvents(0);
  patient.perform([held = socket, paused = watch] {
    char first = 0;
    [[maybe_unused]] const ssize_t size = ::recv(held->get(), &first, 1, MSG_DONTWAIT);
    paused->setEvents(EPOLLIN);
  });
}

void NotificationReceiver::receive() {
  for (int count = 0; count < datagramsPerTurn; ++count) {
    const std::optional<std::string> received = receiveDatagram();
    if (!received) return;
    if (isNotificationName(*received)) take(*received);
  }
}

}  // namespace quenlet
