#pragma once

#include <filesystem>
#include <memory>

#include "bench/ChildProcess.h"
#include "client/CorvelProxy.h"

namespace quenlet {

// A temporary directory with a home and a runtime directory for an agent of the same build, whose
// entitlements name this program. Removed with this object.
class AgentHome final {
 public:
  AgentHome();
  ~AgentHome();
  AgentHome(const AgentHome&) = delete;
  AgentHome& operator=(const AgentHome&) = delete;

  [[nodiscard]] std::unique_ptr<ChildProcess> start() const;
  // Lays down a file of donations for the next agent to find: more than one message could bring.
  void hold(DonationValues values) const;
  // Lays down accounts, each with an e-mail address and the owner's name.
  void addAccounts(std::size_t count) const;
  [[nodiscard]] std::filesystem::path donationsFile() const {
    return directory / "home/Library/Contacts/Donations/donations.plist";
  }
  [[nodiscard]] std::filesystem::path socket() const;
  // A place for the sockets and files of the peers that the agent is measured against.
  [[nodiscard]] std::filesystem::path scratch(const char* name) const { return directory / name; }

 private:
  const std::filesystem::path directory;
};

// An agent that is running and has answered. Ends with this object.
class RunningAgent final {
 public:
  // Is given `values` after its start.
  explicit RunningAgent(const DonationValues& values = {});
  // Finds them in its file.
  struct Stored final {
    DonationValues values;
  };
  explicit RunningAgent(Stored stored);

  // Donates the values and waits until they are durable.
  void donate(const DonationValues& values);

  const AgentHome home;
  const std::unique_ptr<ChildProcess> process;
  std::unique_ptr<CorvelProxy> client = std::make_unique<CorvelProxy>();

 private:
  void waitUntilServing();
};

}  // namespace quenlet
