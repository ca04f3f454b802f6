#pragma once

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/un.h>

#include <cstring>
#include <filesystem>

#include "platform/foundation/FileDescriptor.h"
#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/FrameReader.h"

namespace quenlet {

// Two ends of one connection.
inline std::pair<FileDescriptor, FileDescriptor> connectedPair() {
  std::array<int, 2> ends{};
  EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

inline sockaddr_un socketAddress(const std::filesystem::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.native().copy(address.sun_path, sizeof(address.sun_path) - 1);
  return address;
}

inline FileDescriptor boundSocket(const std::filesystem::path& path, int type = SOCK_STREAM) {
  FileDescriptor socket(::socket(AF_UNIX, type | SOCK_CLOEXEC, 0));
  const sockaddr_un address = socketAddress(path);
  EXPECT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  return socket;
}

// A connection whose first end waits when it is closed, for as long as the other side likes, for
// bytes to be taken; not so once the second one went, with bytes unread.
inline std::pair<FileDescriptor, FileDescriptor> lingeringConnection() {
  FileDescriptor own(::socket(AF_INET, SOCK_STREAM, 0));
  const FileDescriptor listening(::socket(AF_INET, SOCK_STREAM, 0));
  sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
  socklen_t size = sizeof address;
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  const linger wait{1, 1000};
  EXPECT_EQ(::bind(listening.get(), any, size) + ::listen(listening.get(), 1) +
                ::getsockname(listening.get(), any, &size) + ::connect(own.get(), any, size) +
                ::setsockopt(own.get(), SOL_SOCKET, SO_LINGER, &wait, sizeof wait),
            0);
  FileDescriptor other(::accept4(listening.get(), nullptr, nullptr, 0));
  const std::string bytes(1 << 16, 'x');
  while (::send(own.get(), bytes.data(), bytes.size(), MSG_DONTWAIT) > 0) continue;
  return {std::move(own), std::move(other)};
}

// The other end of a service's or client's socket, free to say anything. Blocks, for half a minute.
class RawPeer final {
 public:
  RawPeer() : socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const timeval patience{30, 0};
    ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  }
  explicit RawPeer(FileDescriptor connected) : socket(std::move(connected)) {}
  explicit RawPeer(const std::filesystem::path& path) : RawPeer() { connect(path); }

  void connect(const std::filesystem::path& path) {
    const sockaddr_un at = socketAddress(path);
    EXPECT_EQ(::connect(socket.get(), reinterpret_cast<const sockaddr*>(&at), sizeof at), 0);
  }

  static std::string frame(FrameKind kind, std::uint64_t identifier, std::string_view body) {
    const auto header = FrameHeader::make(kind, identifier, body.size()).encode();
    return std::string(header.data(), header.size()).append(body);
  }
  static std::string request(std::uint64_t number, std::string_view selector,
                             std::string_view text) {
    return frame(FrameKind::request, number,
                 std::move(WireEncoder().string(selector).string(text)).take());
  }

  // False when the other side has ended the connection.
  bool send(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t sent = ::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }

  // As much as is taken without waiting; how many bytes that was.
  [[nodiscard]] std::size_t sendAtOnce(std::string_view bytes) const {
    const ssize_t sent =
        ::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    return static_cast<std::size_t>(std::max<ssize_t>(sent, 0));
  }

  // Sends a byte with a descriptor attached; false when that is refused.
  [[nodiscard]] bool pass(int descriptor) const {
    iovec part{&descriptor, 1};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof descriptor)> control{};
    msghdr message{nullptr, 0, &part, 1, control.data(), control.size(), 0};
    *CMSG_FIRSTHDR(&message) = {CMSG_LEN(sizeof descriptor), SOL_SOCKET, SCM_RIGHTS};
    std::memcpy(CMSG_DATA(CMSG_FIRSTHDR(&message)), &descriptor, sizeof descriptor);
    return ::sendmsg(socket.get(), &message, MSG_NOSIGNAL) == 1;
  }

  // "<identifier> <text>" for a reply, "<identifier> !<code>" for a failure, "<identifier>
  // +<bytes>" for a part of a reply and "<identifier> -<bytes>" for the last one, "end" at the end.
  std::string receive() {
    while (true) {
      if (const auto frame = reader.next()) {
        WireReader values(frame->body);
        const std::string identifier = std::to_string(frame->identifier) + " ";
        const bool goesOn = std::exchange(inParts, frame->kind == FrameKind::partOfReply);
        if (inParts || goesOn) return identifier + (inParts ? "+" : "-") + std::string(frame->body);
        if (frame->kind == FrameKind::reply) {
          return identifier + std::string(values.string().value_or(""));
        }
        return identifier + "!" + std::to_string(ErrorWire::decode(values)->code());
      }
      const auto room = reader.room();
      const ssize_t count = ::recv(socket.get(), room.data(), room.size(), 0);
      if (count <= 0) return "end";
      reader.added(static_cast<std::size_t>(count));
    }
  }

  // The bytes of the next message, to be used without receive(); fewer when the connection ends.
  [[nodiscard]] std::string receiveMessage() const {
    std::string bytes = take(4);
    std::uint32_t length = 0;
    for (std::size_t i = bytes.size(); i-- > 0;) {
      length = length << 8 | static_cast<unsigned char>(bytes[i]);
    }
    EXPECT_LE(length, 1U << 20);
    return length > 1U << 20 ? bytes : bytes + take(length);
  }

  // Nothing more is sent.
  void finish() const { ::shutdown(socket.get(), SHUT_WR); }
  void close() { socket.reset(); }
  // The caller closes it.
  [[nodiscard]] int release() { return socket.release(); }

 private:
  [[nodiscard]] std::string take(std::size_t count) const {
    std::string bytes(count, '\0');
    const ssize_t taken = ::recv(socket.get(), bytes.data(), count, MSG_WAITALL);
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(taken, 0)));
    return bytes;
  }

  FileDescriptor socket;
  FrameReader reader{std::size_t{64} << 20, FrameKind::partOfReply};
  bool inParts = false;
};

}  // namespace quenlet
