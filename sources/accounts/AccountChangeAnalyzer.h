#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/logging/DonationLoggerProvider.h"
#include "protocol/CorvelProtocol.h"

namespace quenlet {

// Works out the donations and removals that follow from one account's change, and requests them.
// Made for one change; one thread. Run the three collecting steps in their order, then
// applyChanges().
class AccountChangeAnalyzer final {
 public:
  // Types of accounts that count while they are active, with any data classes.
  static constexpr std::array<std::string_view, 1> activeRatherThanEnabledDataClasses = {
      "ovaro.account.MelodaStore"};
  // Types of accounts that never count.
  static constexpr std::array<std::string_view, 1> dataClassBlacklist = {"ovaro.account.SMTP"};

  // `oldAccount` is null for an added account, `newAccount` for a removed one.
  AccountChangeAnalyzer(AccountPtr oldAccount, AccountPtr newAccount,
                        std::shared_ptr<CorvelProtocol> store,
                        std::shared_ptr<AccountLogger> logger);

  // Both identifiers of the old account, whether or not it had donations under them.
  void collectRemovals();
  // The new account's values, if it counts. A value that cannot be stored is left out, with a line
  // on standard error.
  void collectDonations();
  // Drops removals of identifiers that are donated again.
  void keepReDonatedIdentifiers();
  // Sends the donations in one request, then the removals in another, and waits for neither.
  // Failures go to the logger, if there is one.
  void applyChanges() const;
  // Whether an account's values are donated: its type decides if the lists above have it; any other
  // account needs a data class. Prints a line for an account that has neither a data class nor its
  // store any more.
  [[nodiscard]] static bool isRelevantAccount(const Account& account);

  const AccountPtr oldAccount;
  const AccountPtr newAccount;
  const std::shared_ptr<CorvelProtocol> store;
  const std::shared_ptr<AccountLogger> logger;
  DonationValues donations;
  std::vector<std::string> identifiersToRemove;
};

}  // namespace quenlet
