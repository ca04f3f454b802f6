// Keeps the donations of the owner's accounts in step with the account store: one account at a time
// as it changes, or all of them at once.

#include "core/Corvel.h"
#include "model/DonationError.h"
#include "platform/PlatformServices.h"
#include "protocol/CorvelInterface.h"
#include "sources/accounts/AccountChangeAnalyzer.h"
#include "sources/accounts/AccountPropertyParser.h"

namespace quenlet {

void Corvel::changeFromAccount(AccountPtr oldAccount, AccountPtr toAccount,
                               ErrorReply completionHandler) {
  if (oldAccount && toAccount) {
    accountLogger->accountChanged(toAccount);
  } else if (toAccount) {
    accountLogger->accountAdded(toAccount);
  } else if (oldAccount) {
    accountLogger->accountRemoved(oldAccount);
  }
  if (featureState == FeatureState::disabled) {
    logger->featureNotEnabled(CorvelSelector::changeAccount);
    completionHandler(makeDonationError(DonationErrorCode::featureNotEnabled, ""));
    return;
  }
  donateAccountChangesFrom(oldAccount, toAccount);
  completionHandler(nullptr);
}

void Corvel::donateAccountChangesFrom(const AccountPtr& oldAccount, const AccountPtr& to) {
  const std::shared_ptr<CorvelProtocol> store =
      accountDonationReceiver ? accountDonationReceiver : shared_from_this();
  AccountChangeAnalyzer analyzer(oldAccount, to, store, nullptr);
  analyzer.collectRemovals();
  analyzer.collectDonations();
  analyzer.keepReDonatedIdentifiers();
  for (const DonationValuePtr& value : analyzer.donations) accountLogger->donating(value);
  for (const std::string& identifier : analyzer.identifiersToRemove) {
    accountLogger->removing(identifier);
  }
  analyzer.applyChanges();
}

void Corvel::reloadAllAccounts() {
  // Listed before anything is dropped: if that fails, nothing is lost. The store is held to the
  // end, since accounts whose store is gone count as dead.
  const std::shared_ptr<AccountStore> store = PlatformServices::current().makeAccountStore();
  const Result<std::vector<AccountPtr>> accounts = store->accounts();
  if (!accounts.ok()) return;
  deleteDonationsWithBundleID(AccountPropertyParser::bundleIdentifier);
  for (const AccountPtr& account : accounts.value()) donateAccountChangesFrom(nullptr, account);
  // If no donation has saved the table meanwhile, save it without the dropped values.
  submitWriterBlock([](Corvel& agent) {
    if (agent.hasUnsavedRemoval) agent.commitTable([](const SaveResponse&) {});
  });
  {
    MutexLock lock(versionsMutex);
    if (bundleIDVersions) {
      (*bundleIDVersions)[AccountPropertyParser::bundleIdentifier] =
          AccountPropertyParser::parserVersion;
    }
  }
  saveExtensionVersions();
}

}  // namespace quenlet
