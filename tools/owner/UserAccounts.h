#pragma once

#include <filesystem>
#include <memory>

#include "platform/accounts/PropertyListAccountStore.h"
#include "quenlet/Result.h"
#include "tools/owner/AccountCatchUp.h"
#include "tools/owner/UntoldAccounts.h"

namespace quenlet {

// The calling user's accounts, as the agent reads them. One thread.
class UserAccounts final {
 public:
  // An error when the user has no home directory.
  [[nodiscard]] static Result<std::unique_ptr<UserAccounts>> open();

  [[nodiscard]] PropertyListAccountStore& store() { return *accountStore; }
  // For changes that no agent was told.
  [[nodiscard]] const AccountCatchUp& catchUp() const { return agentCatchUp; }
  // For changes that an agent is about to be told.
  [[nodiscard]] const UntoldAccounts& untold() const { return untoldAccounts; }

 private:
  UserAccounts(const std::filesystem::path& home, const std::shared_ptr<DataProxy>& dataProxy);

  const std::shared_ptr<PropertyListAccountStore> accountStore;
  const AccountCatchUp agentCatchUp;
  const UntoldAccounts untoldAccounts;
};

}  // namespace quenlet
