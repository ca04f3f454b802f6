#include "sources/accounts/AccountChangeAnalyzer.h"

#include <algorithm>
#include <utility>

#include "platform/foundation/StandardStreams.h"
#include "platform/foundation/Text.h"
#include "sources/OwnDonations.h"
#include "sources/accounts/AccountPropertyParser.h"

namespace quenlet {
namespace {

template <std::size_t Size>
bool contains(const std::array<std::string_view, Size>& types, std::string_view type) {
  return std::find(types.begin(), types.end(), type) != types.end();
}

}  // namespace

AccountChangeAnalyzer::AccountChangeAnalyzer(AccountPtr oldAccount, AccountPtr newAccount,
                                             std::shared_ptr<CorvelProtocol> store,
                                             std::shared_ptr<AccountLogger> logger)
    : oldAccount(std::move(oldAccount)),
      newAccount(std::move(newAccount)),
      store(std::move(store)),
      logger(std::move(logger)) {}

void AccountChangeAnalyzer::collectRemovals() {
  if (!oldAccount) return;
  identifiersToRemove.push_back(AccountPropertyParser::nameIdentifierOf(*oldAccount));
  identifiersToRemove.push_back(AccountPropertyParser::emailIdentifierOf(*oldAccount));
}

void AccountChangeAnalyzer::collectDonations() {
  if (!newAccount || !isRelevantAccount(*newAccount)) return;
  donations =
      OwnDonations::storable(AccountPropertyParser::parserForNow().parseWithAccount(*newAccount));
}

void AccountChangeAnalyzer::keepReDonatedIdentifiers() {
  for (const DonationValuePtr& value : donations) {
    std::erase_if(identifiersToRemove, [&](const std::string& identifier) {
      return canonicallyEqual(identifier, value->decoded().origin.donationIdentifier);
    });
  }
}

void AccountChangeAnalyzer::applyChanges() const {
  if (!store) return;
  if (!donations.empty()) {
    store->donateMeCardValues(donations, [logger = logger](const ErrorPtr& error) {
      if (error && logger) logger->donationFailedWithError(error);
    });
  }
  if (!identifiersToRemove.empty()) {
    store->removeDonatedMeCardValuesForIdentifiers(identifiersToRemove,
                                                   [logger = logger](bool, const ErrorPtr& error) {
                                                     if (error && logger)
                                                       logger->removalFailedWithError(error);
                                                   });
  }
}

bool AccountChangeAnalyzer::isRelevantAccount(const Account& account) {
  if (account.accountType && account.accountType->identifier) {
    const std::string& type = *account.accountType->identifier;
    if (contains(dataClassBlacklist, type)) return false;
    if (contains(activeRatherThanEnabledDataClasses, type)) return account.isActive;
  }
  if (!account.enabledDataclasses.empty()) return true;
  if (account.accountStore.expired()) {
    StandardStreams::writeOutput("Dead accountStore on account object! Ignoring " +
                                 onOneLine(account.description()));
  }
  return false;
}

}  // namespace quenlet
