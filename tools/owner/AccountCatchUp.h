#pragma once

#include <filesystem>
#include <memory>

#include "platform/files/DataProxy.h"
#include "quenlet/Error.h"

namespace quenlet {

// Makes the next agent read all accounts again, after one changed while no agent was running:
// removes the accounts from the agent's table of what it has read, "bundle_versions.plist".
//
// The table belongs to the agent. It is changed under the lock that an agent holds while it runs,
// so no agent can have the old table in memory and write it back. An agent that starts at that
// moment waits a second for the lock, which is held for one small write only. One thread.
class AccountCatchUp final {
 public:
  AccountCatchUp(std::filesystem::path donationsDirectory, std::shared_ptr<DataProxy> dataProxy);

  // Null once the change is durable. An error with code EWOULDBLOCK, and no change, while an agent
  // runs, even one that does not answer because it is starting or ending.
  [[nodiscard]] ErrorPtr schedule() const;

 private:
  const std::filesystem::path directory;
  const std::shared_ptr<DataProxy> dataProxy;
};

}  // namespace quenlet
