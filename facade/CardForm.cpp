#include "facade/CardForm.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "facade/ValueForm.h"
#include "platform/contacts/VCard.h"

namespace quenlet {
namespace {

BusValue valueOf(const std::string& text) { return busText(text); }
BusValue valueOf(const Address& address) { return addressDictionary(address); }

template <typename T>
BusValue entriesOf(const std::vector<CardEntry<T>>& entries, Sources sources) {
  std::vector<BusDictionary> converted;
  for (const CardEntry<T>& entry : entries) {
    BusDictionary& added = converted.emplace_back();
    added.emplace("value", valueOf(entry.value));
    if (!entry.label.empty()) added.emplace("label", busText(entry.label));
    if (sources == Sources::kept || !entry.source) continue;
    const Source& source = *entry.source;
    const auto& cluster = source.clusterIdentifier;
    added.emplace("origin", sourceDictionary({source.bundleIdentifier, source.donationIdentifier,
                                              cluster ? &*cluster : nullptr, source.donationDate,
                                              source.expirationDate}));
  }
  return makeDictionaries(std::move(converted));
}

PostalAddress contactValue(const Address& address) {
  return {address.street, address.subLocality, address.city,    address.subAdministrativeArea,
          address.state,  address.postalCode,  address.country, address.isoCountryCode};
}

template <typename T>
void append(LabeledValues<T>& list, const std::string& label, std::optional<T> value) {
  if (!value) return;
  list.append(
      std::make_shared<const LabeledValue<T>>(LabeledValue<T>{label, *std::move(value), {}}));
}

}  // namespace

Card limitedTo(Card card, const CardKinds& kinds) {
  if (!kinds.contains(CardKind::name)) card.name = {};
  if (!kinds.contains(CardKind::emailAddress)) card.emailAddresses.clear();
  if (!kinds.contains(CardKind::phoneNumber)) card.phoneNumbers.clear();
  if (!kinds.contains(CardKind::postalAddress)) card.postalAddresses.clear();
  if (!kinds.contains(CardKind::imageData)) card.image.reset();
  return card;
}

BusDictionary cardDictionary(const Card& card, Sources sources) {
  const std::size_t imageBytes = card.image ? card.image->bytes.size() : 0;
  BusDictionary entries{{"name", nameDictionary(card.name)},
                        {"emailAddresses", entriesOf(card.emailAddresses, sources)},
                        {"phoneNumbers", entriesOf(card.phoneNumbers, sources)},
                        {"postalAddresses", entriesOf(card.postalAddresses, sources)},
                        {"imageBytes", static_cast<std::int64_t>(imageBytes)}};
  if (card.image) entries.emplace("imageData", BusBytes{card.image->bytes});
  return entries;
}

std::string vCardOf(const Card& card) {
  ContactFields fields;
  fields.namePrefix = card.name.namePrefix.value_or("");
  fields.givenName = card.name.givenName.value_or("");
  fields.middleName = card.name.middleName.value_or("");
  fields.familyName = card.name.familyName.value_or("");
  fields.nameSuffix = card.name.nameSuffix.value_or("");
  fields.nickname = card.name.nickname.value_or("");
  for (const auto& entry : card.emailAddresses) {
    append<std::string>(fields.emailAddresses, entry.label, busText(entry.value));
  }
  for (const auto& entry : card.phoneNumbers) {
    append(fields.phoneNumbers, entry.label, PhoneNumber::withStringValue(entry.value));
  }
  for (const auto& entry : card.postalAddresses) {
    append<PostalAddress>(fields.postalAddresses, entry.label, contactValue(entry.value));
  }
  if (card.image) fields.imageData = std::make_shared<const std::string>(card.image->bytes);
  return busText(writeVCard(Contact(std::move(fields))));
}

}  // namespace quenlet
