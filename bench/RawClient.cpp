#include "bench/RawClient.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>

#include "platform/ipc/FrameHeader.h"
#include "platform/ipc/WireEncoder.h"
#include "protocol/CorvelInterface.h"
#include "protocol/DonationWire.h"

namespace quenlet {
namespace {

std::string asRequest(const WireEncoder& body) {
  const auto header = FrameHeader::make(FrameKind::request, 1, body.bytes().size()).encode();
  return std::string(header.data(), header.size()) + body.bytes();
}

}  // namespace

RawClient::RawClient(const std::filesystem::path& path, Wait chosenWait)
    : socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)), wait(chosenWait) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    socket.reset();
  }
}

bool RawClient::send(const std::string& bytes) const {
  return ::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
         static_cast<ssize_t>(bytes.size());
}

bool RawClient::receive(std::size_t sizeInBytes) {
  received.resize(sizeInBytes);
  for (std::size_t got = 0; got < sizeInBytes;) {
    pollfd readable{socket.get(), POLLIN, 0};
    if (wait == Wait::inPoll && ::poll(&readable, 1, -1) != 1) return false;
    const ssize_t count = ::recv(socket.get(), received.data() + got, sizeInBytes - got, 0);
    if (count <= 0) return false;
    got += static_cast<std::size_t>(count);
  }
  return true;
}

bool RawClient::receiveMessage() {
  if (!receive(FrameHeader::sizeInBytes)) return false;
  const FrameHeader header = FrameHeader::decode(received);
  return receive(header.length - FrameHeader::countedBytes) &&
         header.kind == static_cast<std::uint8_t>(FrameKind::reply);
}

std::string fetchRequest() {
  WireEncoder body;
  return asRequest(body.string(CorvelSelector::fetch));
}

std::string donateRequest(const DonationValues& values) {
  WireEncoder body;
  body.string(CorvelSelector::donate);
  DonationWire::encode(body, values);
  return asRequest(body);
}

}  // namespace quenlet
