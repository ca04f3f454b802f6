#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>

#include "client/CorvelProxy.h"

namespace quenlet {

// The agent of the same build, running for a user with a home of its own, and a client that it
// serves. Ends with this object. Ends the program with a message when it cannot be started.
class RunningAgent final {
 public:
  RunningAgent();
  ~RunningAgent();
  RunningAgent(const RunningAgent&) = delete;
  RunningAgent& operator=(const RunningAgent&) = delete;

  [[nodiscard]] CorvelProxy& client() { return *proxy; }
  // Donates the values and waits until they are durable.
  void donate(const DonationValues& values);
  [[nodiscard]] std::filesystem::path donationsFile() const {
    return directory / "home/Library/Contacts/Donations/donations.plist";
  }

 private:
  void installWithEntitlement() const;
  void waitUntilServing();

  const std::filesystem::path directory;
  pid_t pid = -1;
  std::unique_ptr<CorvelProxy> proxy;
};

}  // namespace quenlet
