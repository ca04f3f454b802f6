#pragma once

#include <filesystem>
#include <memory>

#include "platform/accounts/PropertyListAccountStore.h"
#include "quenlet/Result.h"
#include "tools/owner/UntoldAccounts.h"

namespace quenlet {

// The calling user's accounts, as the agent reads them. One thread.
class UserAccounts final {
 public:
  // An error when the user has no home directory.
  [[nodiscard]] static Result<std::unique_ptr<UserAccounts>> open();

  [[nodiscard]] PropertyListAccountStore& store() { return *accountStore; }
  // For changes that an agent is about to be told.
  [[nodiscard]] const UntoldAccounts& untold() const { return untoldAccounts; }

  // For changes that no agent was told: makes the next one read all accounts again, by removing
  // them from the agent's table of what it has read, "bundle_versions.plist". Null once that is
  // durable. An error with code EWOULDBLOCK, and no change, while an agent runs, even one that does
  // not answer because it is starting or ending.
  //
  // The table belongs to the agent. It is changed under the lock that an agent holds while it runs,
  // so no agent can have the old table in memory and write it back. An agent that starts at that
  // moment waits a second for the lock, which is held for one small write only.
  [[nodiscard]] ErrorPtr forgetWhatAgentHasRead() const;

 private:
  UserAccounts(const std::filesystem::path& home, std::shared_ptr<DataProxy> dataProxy);

  const std::filesystem::path donationsDirectory;
  const std::shared_ptr<DataProxy> files;
  const std::shared_ptr<PropertyListAccountStore> accountStore;
  const UntoldAccounts untoldAccounts;
};

}  // namespace quenlet
