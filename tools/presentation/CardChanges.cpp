#include "tools/presentation/CardChanges.h"

#include <map>
#include <string>
#include <utility>
#include <variant>

#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

using Entries = std::vector<WatchedEntry>;

Value valueOf(const LabeledValue<std::string>& entry) {
  return Value::emailAddress(entry.value, entry.label);
}
Value valueOf(const LabeledValue<PhoneNumber>& entry) {
  return Value::phoneNumber(entry.value.stringValue(), entry.label);
}
Value valueOf(const LabeledValue<PostalAddress>& entry) {
  return Value::postalAddress(entry.value, {}, entry.label);
}

template <typename T>
void append(Entries& all, const LabeledValues<T>& entries) {
  for (const auto& entry : entries) {
    all.push_back({valueOf(*entry), entry->storeInfo.valueOrigin});
  }
}

bool isSameValue(const Value& a, const Value& b) {
  const auto* image = std::get_if<Value::ImageData>(&a.cases());
  const auto* other = std::get_if<Value::ImageData>(&b.cases());
  return image && other ? *image->bytes == *other->bytes : a == b;
}

bool isSame(const WatchedEntry& a, const WatchedEntry& b) {
  if (!a.origin || !b.origin) return a.origin == b.origin && isSameValue(a.value, b.value);
  return *a.origin == *b.origin && isSameValue(a.value, b.value);
}

// Finds the entries of two cards that are one entry; what they do not find is left over.
class Matching final {
 public:
  Matching(Entries before, Entries after) : removed(std::move(before)), added(std::move(after)) {}

  // Pairs entries with the same key that have not been paired before.
  template <typename KeyOf>
  void pair(KeyOf keyOf) {
    std::multimap<std::string, WatchedEntry> earlier;
    for (WatchedEntry& entry : removed) earlier.emplace(keyOf(entry), std::move(entry));
    Entries unpaired;
    for (WatchedEntry& entry : added) {
      const auto found = earlier.find(keyOf(entry));
      if (found == earlier.end()) {
        unpaired.push_back(std::move(entry));
        continue;
      }
      if (!isSame(found->second, entry)) {
        changed.push_back({std::move(found->second), std::move(entry)});
      }
      earlier.erase(found);
    }
    added = std::move(unpaired);
    removed.clear();
    for (auto& [key, entry] : earlier) removed.push_back(std::move(entry));
  }

  [[nodiscard]] CardChanges take() && {
    return {std::move(added), std::move(removed), std::move(changed)};
  }

 private:
  Entries removed;
  Entries added;
  std::vector<CardChanges::Change> changed;
};

}  // namespace

std::vector<WatchedEntry> entriesOf(const Contact& card) {
  Entries entries;
  auto name = PersonNameComponents::componentsForContact(card);
  if (!textOf(name).empty()) entries.push_back({Value::name(std::move(name)), nullptr});
  append(entries, card.emailAddresses());
  append(entries, card.phoneNumbers());
  append(entries, card.postalAddresses());
  if (card.imageData()) entries.push_back({Value::imageData(card.imageData()), nullptr});
  return entries;
}

bool CardChanges::Change::isRenewal() const {
  return from.origin && to.origin && isSameValue(from.value, to.value) &&
         from.origin->donationIdentifier == to.origin->donationIdentifier &&
         from.origin->bundleIdentifier == to.origin->bundleIdentifier;
}

CardChanges CardChanges::between(const Contact& before, const Contact& after) {
  Matching matching(entriesOf(before), entriesOf(after));
  matching.pair([](const WatchedEntry& entry) {
    const std::string kind = kindOf(entry.value);
    return entry.origin ? kind + ' ' + entry.origin->donationIdentifier : kind;
  });
  matching.pair([](const WatchedEntry& entry) {
    return std::string(kindOf(entry.value)).append(" ").append(textOf(entry.value));
  });
  return std::move(matching).take();
}

}  // namespace quenlet
