#pragma once

#include <memory>
#include <utility>

#include "platform/logging/DonationLoggerProvider.h"
#include "protocol/CorvelProtocol.h"
#include "storage/DonationStore.h"
#include "storage/SourceVersions.h"

namespace quenlet {

// Keeps the donations of the owner's accounts in step with the account store: one account at a time
// as it changes, or all of them at once. Thread-safe.
class AccountSync final {
 public:
  AccountSync(std::shared_ptr<DonationStore> donationStore,
              std::shared_ptr<SourceVersions> sourceVersions, std::shared_ptr<AccountLogger> logger)
      : store(std::move(donationStore)),
        versions(std::move(sourceVersions)),
        accountLogger(std::move(logger)) {}

  // Logs that an account was added, changed or removed. Logs nothing when both are null.
  void logChange(const AccountPtr& oldAccount, const AccountPtr& toAccount) const;
  // Updates the donations of one account to its new state. `oldAccount` is null for an added
  // account, `to` for a removed one. `receiver` takes the donations and removals.
  void donateAccountChangesFrom(const AccountPtr& oldAccount, const AccountPtr& to,
                                const std::shared_ptr<CorvelProtocol>& receiver) const;

  // Whether the accounts have not been read by this version of their parser.
  [[nodiscard]] bool needsReload() const;
  // Replaces the donations of all accounts by those of the present ones, and notes the parser's
  // version. Does nothing when the account store cannot be read.
  void reloadAllAccounts(const std::shared_ptr<CorvelProtocol>& receiver) const;

 private:
  const std::shared_ptr<DonationStore> store;
  const std::shared_ptr<SourceVersions> versions;
  const std::shared_ptr<AccountLogger> accountLogger;
};

}  // namespace quenlet
