#include "tools/owner/Backup.h"

#include <set>
#include <utility>

#include "client/Pseudonyms.h"
#include "model/DonationBounds.h"
#include "platform/accounts/PropertyListAccountStore.h"
#include "platform/contacts/VCard.h"
#include "platform/foundation/PropertyListSerializer.h"

namespace quenlet {
namespace {

constexpr char versionKey[] = "version";
constexpr char madeKey[] = "made";
constexpr char donationsKey[] = "donations";
constexpr char feedbackKey[] = "feedback";
constexpr char accountsKey[] = "accounts";
constexpr char ownCardKey[] = "ownCard";
constexpr char pseudonymKeyKey[] = "pseudonymKey";

ErrorPtr fault(std::string sentence) {
  return makeError(PropertyListErrorDomain, 0, "not a quenlet export: " + std::move(sentence));
}

std::string nth(const char* what, std::size_t place) {
  return std::string(what) + " " + std::to_string(place + 1);
}

// The array under `key`, or null.
const PropertyListArray* arrayIn(const PropertyListDictionary& entries, const char* key) {
  const PropertyList* found = findEntry(entries, key);
  return found ? found->array() : nullptr;
}

ErrorPtr checkVersion(const PropertyListDictionary& entries) {
  const PropertyList* found = findEntry(entries, versionKey);
  if (!found || !found->integer()) return fault("it has no version");
  if (*found->integer() == Backup::version) return nullptr;
  return makeError(PropertyListErrorDomain, 0,
                   "this export has version " + std::to_string(*found->integer()) +
                       ", and this program reads version " + std::to_string(Backup::version));
}

ErrorPtr readDonations(const PropertyListDictionary& entries, Backup& backup) {
  const PropertyListArray* records = arrayIn(entries, donationsKey);
  if (!records) return fault("it has no list of donations");
  std::set<Fingerprint> keys;
  for (std::size_t place = 0; place < records->size(); ++place) {
    const PropertyListDictionary* record = (*records)[place].dictionary();
    DonationValuePtr value =
        record ? DonationValue::initWithPropertyListRepresentation(*record) : nullptr;
    if (!value) return fault(nth("donation", place) + " cannot be read");
    if (const auto violation = DonationBounds::violation(*record)) {
      return fault(nth("donation", place) + ": " + *violation);
    }
    if (!keys.insert(value->donationKey()).second) {
      return fault(nth("donation", place) + " has the identifier of an earlier one");
    }
    backup.donations.push_back(std::move(value));
  }
  return nullptr;
}

ErrorPtr readFeedback(const PropertyListDictionary& entries, Backup& backup) {
  const PropertyListDictionary* contacts = findDictionary(entries, feedbackKey);
  if (!contacts) return fault("it has no feedback");
  for (const auto& [contact, decisions] : *contacts) {
    if (!decisions.array()) return fault("its feedback is not a list");
  }
  backup.feedback = *contacts;
  return nullptr;
}

ErrorPtr readAccounts(const PropertyListDictionary& entries, Backup& backup) {
  const PropertyListArray* records = arrayIn(entries, accountsKey);
  if (!records) return fault("it has no list of accounts");
  std::set<std::string> identifiers;
  for (std::size_t place = 0; place < records->size(); ++place) {
    const PropertyListDictionary* record = (*records)[place].dictionary();
    auto account = record ? Account::initWithPropertyListRepresentation(*record) : std::nullopt;
    if (!account) return fault(nth("account", place) + " cannot be read");
    const ErrorPtr problem = PropertyListAccountStore::problemOfAccount(*account);
    if (problem) return fault(nth("account", place) + ": " + problem->debugDescription());
    if (!identifiers.insert(account->identifier).second) {
      return fault(nth("account", place) + " has the identifier of an earlier one");
    }
    backup.accounts.push_back(*std::move(account));
  }
  return nullptr;
}

// Each of the two may be missing, but be nothing else.
ErrorPtr readBytes(const PropertyListDictionary& entries, Backup& backup) {
  const PropertyList* card = findEntry(entries, ownCardKey);
  if (card && (!card->data() || card->data()->bytes.size() > maximumVCardSizeInBytes)) {
    return fault("its own card is not data, or is too large");
  }
  if (card) backup.ownCard = card->data()->bytes;
  const PropertyList* secret = findEntry(entries, pseudonymKeyKey);
  if (secret && (!secret->data() || secret->data()->bytes.size() != Pseudonyms::keySizeInBytes)) {
    return fault("its key for pseudonyms is not a key");
  }
  if (secret) backup.pseudonymKey = secret->data()->bytes;
  return nullptr;
}

}  // namespace

Result<std::string> Backup::text() const {
  PropertyListArray records;
  for (const DonationValuePtr& value : donations) {
    records.emplace_back(value->propertyListRepresentation());
  }
  PropertyListArray kept;
  for (const Account& account : accounts) kept.emplace_back(account.propertyListRepresentation());
  PropertyListDictionary entries{{versionKey, version},
                                 {madeKey, made.secondsSince1970()},
                                 {donationsKey, std::move(records)},
                                 {feedbackKey, feedback},
                                 {accountsKey, std::move(kept)}};
  if (ownCard) entries.emplace(ownCardKey, Data{*ownCard});
  if (pseudonymKey) entries.emplace(pseudonymKeyKey, Data{*pseudonymKey});
  return PropertyListSerializer::dataWithObject(std::move(entries));
}

Result<Backup> Backup::read(std::string_view bytes) {
  const Result<PropertyList> object = PropertyListSerializer::objectWithData(bytes);
  if (!object.ok()) return Result<Backup>::failure(object.error());
  const PropertyListDictionary* entries = object.value().dictionary();
  if (!entries) return Result<Backup>::failure(fault("its top level is not a dictionary"));
  if (const ErrorPtr error = checkVersion(*entries)) return Result<Backup>::failure(error);
  Backup backup;
  const PropertyList* made = findEntry(*entries, madeKey);
  if (!made || !made->real()) return Result<Backup>::failure(fault("it has no date"));
  backup.made = Date(*made->real());
  for (const auto& readPart : {readDonations, readFeedback, readAccounts, readBytes}) {
    if (const ErrorPtr error = readPart(*entries, backup)) return Result<Backup>::failure(error);
  }
  return Result<Backup>::success(std::move(backup));
}

}  // namespace quenlet
