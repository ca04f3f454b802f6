#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/donations/CorvelProtocol.h"
#include "platform/logging/AccountLogger.h"

namespace quenlet {

// Works out what one account's change means for its donations, and asks for it. Made for one
// change; one thread. Run the three collecting steps in their order, then applyChanges().
class AccountChangeAnalyzer final {
 public:
  // Types of accounts that count while they are active, whatever their data classes.
  static constexpr std::array<std::string_view, 1> activeRatherThanEnabledDataClasses = {
      "ovaro.account.MelodaStore"};
  // Types of accounts that never count.
  static constexpr std::array<std::string_view, 1> dataClassBlacklist = {"ovaro.account.SMTP"};

  // Each may be null: no old account is an added one, no new account a removed one.
  AccountChangeAnalyzer(AccountPtr oldAccount, AccountPtr newAccount,
                        std::shared_ptr<CorvelProtocol> store,
                        std::shared_ptr<AccountLogger> logger);

  // Both identifiers of the old account, whether or not it had donations under them.
  void collectRemovals();
  // What the new account says, if it counts. A value that cannot be stored is left out and told on
  // standard error.
  void collectDonations();
  // Leaves out of the removals what is donated again.
  void keepReDonatedIdentifiers();
  // Sends the donations in one request, then the removals in another, and waits for neither. The
  // logger, if any, hears of their failures.
  void applyChanges() const;
  // Whether an account's values are donated: by its type where the lists above know that, else when
  // it has a data class. Prints a line for an account that has neither that nor its store any more.
  [[nodiscard]] static bool isRelevantAccount(const Account& account);

  const AccountPtr oldAccount;
  const AccountPtr newAccount;
  const std::shared_ptr<CorvelProtocol> store;
  const std::shared_ptr<AccountLogger> logger;
  DonationValues donations;
  std::vector<std::string> identifiersToRemove;
};

}  // namespace quenlet
