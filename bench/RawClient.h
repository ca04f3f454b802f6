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
  // How it waits for bytes. The kernel also wakes a client in `recv` when its request is read.
  enum class Wait { inReceive, inPoll };

  explicit RawClient(FileDescriptor connected, Wait chosenWait = Wait::inReceive)
      : socket(std::move(connected)), wait(chosenWait) {}
  // Not connected when nobody listens there.
  explicit RawClient(const std::filesystem::path& path, Wait chosenWait = Wait::inReceive);

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
  const Wait wait;
};

// Requests as they go over the agent's socket: for the card, and to donate.
[[nodiscard]] std::string fetchRequest();
[[nodiscard]] std::string donateRequest(const DonationValues& values);

}  // namespace quenlet
