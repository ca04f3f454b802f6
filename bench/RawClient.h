#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "model/DonationValue.h"
#include "platform/foundation/FileDescriptor.h"

namespace quenlet {

// A client of a Unix socket that only sends and receives, so that the figures are the other side's.
class RawClient final {
 public:
  explicit RawClient(FileDescriptor connected) : socket(std::move(connected)) {}
  // Not connected when nobody listens there.
  explicit RawClient(const std::filesystem::path& path);

  [[nodiscard]] bool isConnected() const { return socket.isOpen(); }
  // False when the connection breaks.
  [[nodiscard]] bool send(const std::string& bytes) const;
  [[nodiscard]] bool receive(std::size_t sizeInBytes);
  // Receives one message of the agent's; gives its kind, or nothing.
  [[nodiscard]] bool receiveMessage();

  // The last message received.
  std::string received;

 private:
  FileDescriptor socket;
};

// Requests as they go over the agent's socket: for the card, and to donate.
[[nodiscard]] std::string fetchRequest();
[[nodiscard]] std::string donateRequest(const DonationValues& values);

}  // namespace quenlet
