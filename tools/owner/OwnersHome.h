#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/files/DataProxy.h"
#include "quenlet/Date.h"
#include "tools/owner/Backup.h"
#include "tools/owner/DonationJournal.h"
#include "tools/owner/OwnCardFile.h"
#include "tools/owner/UserAccounts.h"
#include "tools/owner/WaitingAgent.h"

namespace quenlet {

// Takes a backup of what the owner has, and puts one in place. Needs the agent, which alone knows
// the donations. One thread.
class OwnersHome final {
 public:
  struct Imported final {
    std::size_t donations = 0;
    DonationValues leftOut = {};  // the agent did not take them
    std::size_t expired = 0;      // since the backup was taken: they are not given again
    std::size_t decisions = 0;
    std::size_t accounts = 0;
    bool ownCard = false;
    // Files donated before the export was made have new bundles here, beside those imported.
    bool hasOtherKey = false;
    // The copy of the former card, if there was a different one.
    std::optional<std::filesystem::path> formerCard = std::nullopt;
  };

  // An error when the user has no home directory.
  [[nodiscard]] static Result<OwnersHome> open(CorvelProtocol& agent, Date now);

  // An error when anything cannot be read, except for accounts: those are left out, and reported on
  // standard error.
  [[nodiscard]] Result<Backup> backUp() const;

  // What putting `backup` in place would overwrite, in words: donations and accounts with the same
  // identifiers but different content, a different own card, feedback that is not a list. Equal
  // content does not conflict, so an import that was cut short can be repeated. An error when
  // anything there cannot be read.
  [[nodiscard]] Result<std::vector<std::string>> conflicts(const Backup& backup) const;
  // Puts the whole backup in place. The donations come first, in their order; then the agent is
  // told of each account that changes and donates its values anew, so those of the backup follow
  // once more and bring back their own dates. Everything else stays. After an error the same call
  // can be repeated.
  [[nodiscard]] Result<Imported> restore(const Backup& backup) const;

 private:
  OwnersHome(CorvelProtocol& askedAgent, Date currentDate, const std::filesystem::path& home,
             std::shared_ptr<UserAccounts> userAccounts, DonationJournal donationJournal);

  [[nodiscard]] ErrorPtr restoreDonations(const Backup& backup, Imported& imported) const;
  [[nodiscard]] ErrorPtr restoreAccounts(const Backup& backup, Imported& imported) const;
  [[nodiscard]] ErrorPtr restoreAccount(const Account& account, Imported& imported) const;
  [[nodiscard]] ErrorPtr restoreFeedback(const Backup& backup, Imported& imported) const;
  [[nodiscard]] ErrorPtr restoreOwnCard(const Backup& backup, Imported& imported) const;
  // Nothing without a card.
  [[nodiscard]] Result<std::optional<std::string>> ownCard() const;

  // Those that have not expired.
  [[nodiscard]] DonationValues lastingOf(const Backup& backup) const;

  const WaitingAgent agent;
  const Date now;
  const std::shared_ptr<DataProxy> dataProxy;
  const OwnCardFile ownCardFile;
  const PropertyListFile feedback;
  const std::shared_ptr<UserAccounts> accounts;
  const DonationJournal journal;
};

}  // namespace quenlet
