#include "sources/accounts/AccountSync.h"

#include "platform/PlatformServices.h"
#include "sources/accounts/AccountChangeAnalyzer.h"
#include "sources/accounts/AccountPropertyParser.h"

namespace quenlet {

void AccountSync::logChange(const AccountPtr& oldAccount, const AccountPtr& toAccount) const {
  if (oldAccount && toAccount) {
    accountLogger->accountChanged(toAccount);
  } else if (toAccount) {
    accountLogger->accountAdded(toAccount);
  } else if (oldAccount) {
    accountLogger->accountRemoved(oldAccount);
  }
}

void AccountSync::donateAccountChangesFrom(const AccountPtr& oldAccount, const AccountPtr& to,
                                           const std::shared_ptr<CorvelProtocol>& receiver) const {
  AccountChangeAnalyzer analyzer(oldAccount, to, receiver, nullptr);
  analyzer.collectRemovals();
  analyzer.collectDonations();
  analyzer.keepReDonatedIdentifiers();
  for (const DonationValuePtr& value : analyzer.donations) accountLogger->donating(value);
  for (const std::string& identifier : analyzer.identifiersToRemove) {
    accountLogger->removing(identifier);
  }
  analyzer.applyChanges();
}

bool AccountSync::needsReload() const {
  return !versions->isCurrent(AccountPropertyParser::bundleIdentifier,
                              AccountPropertyParser::parserVersion);
}

void AccountSync::reloadAllAccounts(const std::shared_ptr<CorvelProtocol>& receiver) const {
  // Listed before anything is dropped: if that fails, nothing is lost. The account store is held to
  // the end, since accounts whose store is gone count as dead.
  const std::shared_ptr<AccountStore> accountStore = PlatformServices::current().makeAccountStore();
  const Result<std::vector<AccountPtr>> accounts = accountStore->accounts();
  if (!accounts.ok()) return;
  store->deleteDonationsWithBundleID(AccountPropertyParser::bundleIdentifier);
  for (const AccountPtr& account : accounts.value()) {
    donateAccountChangesFrom(nullptr, account, receiver);
  }
  // If no donation has saved the table meanwhile, save it without the dropped values.
  store->saveUnsavedRemoval();
  versions->note(AccountPropertyParser::bundleIdentifier, AccountPropertyParser::parserVersion);
  versions->saveExtensionVersions();
}

}  // namespace quenlet
