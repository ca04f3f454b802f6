#include "tools/owner/OwnersHome.h"

#include <algorithm>
#include <utility>

#include "platform/contacts/ContactStore.h"
#include "platform/contacts/VCard.h"
#include "platform/contacts/VCardContactStore.h"
#include "platform/feedback/FeedbackFile.h"
#include "platform/files/FileReading.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/UserDirectories.h"
#include "tools/owner/AgentDonations.h"
#include "tools/owner/HeldDonations.h"
#include "tools/owner/OwnersDecisions.h"

namespace quenlet {
namespace {

using CardBytes = std::optional<std::string>;

ErrorPtr errorOf(const Result<bool>& outcome) { return outcome.ok() ? nullptr : outcome.error(); }

// The contacts of `from` whose entry in `contacts` is not a list.
std::vector<std::string> contactsWithoutList(const PropertyListDictionary& from,
                                             const PropertyListDictionary& contacts) {
  std::vector<std::string> found;
  for (const auto& [contact, decisions] : from) {
    const PropertyList* present = findEntry(contacts, contact);
    if (present && !present->array()) found.push_back(contact);
  }
  return found;
}

// Adds the decisions that the list of the same contact lacks; gives their number. Replaces an
// entry that is not a list.
std::size_t addDecisions(const PropertyListDictionary& from, PropertyListDictionary& contacts) {
  std::size_t added = 0;
  for (const auto& [contact, decisions] : from) {
    const PropertyList& present = contacts.try_emplace(contact, PropertyListArray()).first->second;
    PropertyListArray all = present.array() ? *present.array() : PropertyListArray();
    for (const PropertyList& decision : *decisions.array()) {
      if (std::find(all.begin(), all.end(), decision) != all.end()) continue;
      all.push_back(decision);
      ++added;
    }
    contacts.insert_or_assign(contact, std::move(all));
  }
  return added;
}

std::vector<FeedbackDecision> decisionsOf(const Backup& backup) {
  const PropertyList* list = findEntry(backup.feedback, MeCardContactIdentifier);
  if (!list || !list->array()) return {};
  return FeedbackEntries::decisionsOfList(*list->array());
}

}  // namespace

Result<OwnersHome> OwnersHome::open(CorvelProtocol& agent, Date now) {
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Result<OwnersHome>::failure(home.error());
  auto accounts = UserAccounts::open();
  if (!accounts.ok()) return Result<OwnersHome>::failure(accounts.error());
  auto journal = DonationJournal::open();
  if (!journal.ok()) return Result<OwnersHome>::failure(journal.error());
  return Result<OwnersHome>::success(OwnersHome(
      agent, now, home.value(), std::move(accounts).takeValue(), std::move(journal).takeValue()));
}

OwnersHome::OwnersHome(CorvelProtocol& askedAgent, Date currentDate,
                       const std::filesystem::path& home,
                       std::shared_ptr<UserAccounts> userAccounts, DonationJournal donationJournal)
    : agent(askedAgent),
      now(currentDate),
      dataProxy(std::make_shared<PosixDataProxy>()),
      ownCardFile(home / MeCardPath),
      feedback(home / FeedbackPath, dataProxy),
      accounts(std::move(userAccounts)),
      journal(std::move(donationJournal)) {}

Result<Backup> OwnersHome::backUp() const {
  using Taken = Result<Backup>;
  Backup backup{.made = now};
  const auto list = agent.donations();
  if (!list.ok()) return Taken::failure(list.error());
  backup.donations = *list.value();
  auto decisions = feedback.read();
  if (!decisions.ok()) return Taken::failure(decisions.error());
  backup.feedback = std::move(decisions).takeValue();
  const auto known = accounts->store().accounts();
  if (!known.ok()) return Taken::failure(known.error());
  for (const AccountPtr& account : known.value()) backup.accounts.push_back(*account);
  Result<CardBytes> card = ownCard();
  if (!card.ok()) return Taken::failure(card.error());
  backup.ownCard = std::move(card).takeValue();
  auto key = journal.knownKey();
  if (!key.ok()) return Taken::failure(key.error());
  backup.pseudonymKey = std::move(key).takeValue();
  return Taken::success(std::move(backup));
}

Result<std::vector<std::string>> OwnersHome::conflicts(const Backup& backup) const {
  using Found = Result<std::vector<std::string>>;
  std::vector<std::string> found;
  const auto list = agent.donations();
  if (!list.ok()) return Found::failure(list.error());
  // Unreadable feedback or an unreadable journal must be found before anything changes.
  const auto decisions = feedback.read();
  if (!decisions.ok()) return Found::failure(decisions.error());
  if (const auto entries = journal.entries(); !entries.ok()) return Found::failure(entries.error());
  const HeldDonations held(list.value());
  for (const DonationValuePtr& value : lastingOf(backup)) {
    const DonationValuePtr present = held.inPlaceOf(*value);
    if (!present || *present == *value) continue;
    found.push_back("the donation " + value->decoded().origin.donationIdentifier);
  }
  const Result<CardBytes> card = ownCard();
  if (!card.ok()) return Found::failure(card.error());
  if (backup.ownCard && card.value() && *card.value() != *backup.ownCard) {
    found.push_back("your own card");
  }
  for (const DonationValuePtr& value : valuesDecidedOn(*list.value(), decisionsOf(backup))) {
    found.push_back("the donation " + value->decoded().origin.donationIdentifier +
                    ", whose value the export has as rejected");
  }
  for (const std::string& contact : contactsWithoutList(backup.feedback, decisions.value())) {
    found.push_back("the decisions on the contact " + contact);
  }
  for (const Account& account : backup.accounts) {
    const auto present = accounts->store().accountWithIdentifier(account.identifier);
    const bool isOther = present.ok() ? !(*present.value() == account)
                                      : !PropertyListAccountStore::isUnknown(*present.error());
    if (isOther) found.push_back("the account " + account.identifier);
  }
  return Found::success(std::move(found));
}

Result<OwnersHome::Imported> OwnersHome::restore(const Backup& backup) const {
  Imported imported;
  for (const auto& restorePart :
       {&OwnersHome::restoreDonations, &OwnersHome::restoreAccounts, &OwnersHome::restoreDonations,
        &OwnersHome::restoreOwnCard, &OwnersHome::restoreFeedback}) {
    if (ErrorPtr error = (this->*restorePart)(backup, imported)) {
      return Result<Imported>::failure(std::move(error));
    }
  }
  if (backup.pseudonymKey) {
    const Result<bool> isTaken = journal.setKey(*backup.pseudonymKey);
    if (!isTaken.ok()) return Result<Imported>::failure(isTaken.error());
    imported.hasOtherKey = !isTaken.value();
  }
  return Result<Imported>::success(imported);
}

ErrorPtr OwnersHome::restoreDonations(const Backup& backup, Imported& imported) const {
  const auto before = agent.donations();
  if (!before.ok()) return before.error();
  const HeldDonations present(before.value());
  const DonationValues lasting = lastingOf(backup);
  imported.expired = backup.donations.size() - lasting.size();
  DonationValues missing;
  for (const DonationValuePtr& value : lasting) {
    const DonationValuePtr held = present.inPlaceOf(*value);
    if (!held || !(*held == *value)) missing.push_back(value);
  }
  if (ErrorPtr error = agent.donateInParts(missing)) return error;
  const auto after = agent.donations();
  if (!after.ok()) return after.error();
  const HeldDonations held(after.value());
  imported.donations = 0;
  imported.leftOut.clear();
  for (const DonationValuePtr& value : lasting) {
    if (held.hasGift(*value)) {
      ++imported.donations;
    } else {
      imported.leftOut.push_back(value);
    }
  }
  return nullptr;
}

ErrorPtr OwnersHome::restoreOwnCard(const Backup& backup, Imported& imported) const {
  if (!backup.ownCard) return nullptr;
  const auto replaced = ownCardFile.replaceWithBytes(*backup.ownCard);
  if (!replaced.ok()) return replaced.error();
  imported.ownCard = !replaced.value().isUnchanged;
  imported.formerCard = replaced.value().former;
  return nullptr;
}

ErrorPtr OwnersHome::restoreAccounts(const Backup& backup, Imported& imported) const {
  if (backup.accounts.empty()) return nullptr;
  const auto lock = accounts->store().lock();
  if (!lock.ok()) return lock.error();
  for (const Account& account : backup.accounts) {
    if (ErrorPtr error = restoreAccount(account, imported)) return error;
  }
  return nullptr;
}

ErrorPtr OwnersHome::restoreAccount(const Account& account, Imported& imported) const {
  PropertyListAccountStore& store = accounts->store();
  const auto present = store.accountWithIdentifier(account.identifier);
  if (present.ok() && *present.value() == account) return nullptr;
  if (ErrorPtr error = store.save(account)) return error;
  AccountPtr former = present.ok() ? present.value() : nullptr;
  // Nobody knows what a damaged account gave; its identifier alone is enough to have it removed.
  if (!former && !PropertyListAccountStore::isUnknown(*present.error())) {
    former = std::make_shared<const Account>(Account{.identifier = account.identifier});
  }
  ErrorPtr error = agent.changeAccount(former, std::make_shared<const Account>(account));
  if (!error) {
    ++imported.accounts;
    return nullptr;
  }
  // An import that is made again must find a difference, or it would not tell the agent.
  const ErrorPtr stays = present.ok() ? store.save(*former) : store.remove(account.identifier);
  if (!stays) return error;
  return makeError(
      error->domain(), error->code(),
      error->debugDescription() + "; the agent hears of the account " + account.identifier +
          " when it starts, since it could not be put back: " + stays->debugDescription());
}

ErrorPtr OwnersHome::restoreFeedback(const Backup& backup, Imported& imported) const {
  if (backup.feedback.empty()) return nullptr;
  return errorOf(feedback
                     .update(
                         [&](PropertyListDictionary& contacts) {
                           const bool loses =
                               !contactsWithoutList(backup.feedback, contacts).empty();
                           if (loses) feedback.keepDamagedFile();
                           imported.decisions = addDecisions(backup.feedback, contacts);
                           return loses || imported.decisions > 0;
                         },
                         PropertyListFile::OnDamage::fail)
                     .result());
}

DonationValues OwnersHome::lastingOf(const Backup& backup) const {
  DonationValues lasting = backup.donations;
  std::erase_if(lasting, [this](const auto& value) { return expiresBy(*value, now); });
  return lasting;
}

Result<CardBytes> OwnersHome::ownCard() const {
  Result<std::string> bytes =
      readFileOfAtMost(maximumVCardSizeInBytes, ownCardFile.location(), *dataProxy);
  if (bytes.ok()) return Result<CardBytes>::success(std::move(bytes).takeValue());
  if (isMissingFile(*bytes.error())) return Result<CardBytes>::success(std::nullopt);
  return Result<CardBytes>::failure(bytes.error());
}

}  // namespace quenlet
