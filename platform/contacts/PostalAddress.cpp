#include "platform/contacts/PostalAddress.h"

#include "platform/foundation/Text.h"

namespace quenlet {
PropertyListDictionary PostalAddress::dictionaryRepresentation() const {
  PropertyListDictionary entries;
  for (const auto& [key, field] : postalFieldsByKey) {
    if (!(this->*field).empty()) entries.emplace(key, this->*field);
  }
  return entries;
}

std::optional<PostalAddress> PostalAddress::postalAddressWithDictionaryRepresentation(
    const PropertyListDictionary& entries) {
  PostalAddress address;
  bool anyKnownKey = false;
  for (const auto& [key, field] : postalFieldsByKey) {
    const PropertyList* entry = findEntry(entries, key);
    if (!entry) continue;
    const std::string* text = entry->string();
    if (!text) return std::nullopt;
    address.*field = *text;
    anyKnownKey = true;
  }
  if (!anyKnownKey) return std::nullopt;
  return address;
}

// Each field after its size: otherwise ("ab", "c") and ("a", "bc") would share a key.
std::string PostalAddress::key() const {
  std::string key;
  for (const auto& entry : postalFieldsByKey) {
    const std::string canonical = canonicalKey(this->*entry.second);
    key.append(std::to_string(canonical.size())).append(":").append(canonical);
  }
  return key;
}

PostalAddress::Field PostalAddress::fieldForKey(std::string_view key) {
  for (const auto& [fieldKey, field] : postalFieldsByKey) {
    if (fieldKey == key) return field;
  }
  return nullptr;
}

bool operator==(const PostalAddress& a, const PostalAddress& b) {
  for (const auto& [key, field] : postalFieldsByKey) {
    if (!canonicallyEqual(a.*field, b.*field)) return false;
  }
  return true;
}

}  // namespace quenlet
