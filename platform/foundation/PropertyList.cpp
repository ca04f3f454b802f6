#include "platform/foundation/PropertyList.h"

namespace quenlet {

const PropertyList* findEntry(const PropertyListDictionary& entries, std::string_view key) {
  const auto found = entries.find(key);
  return found == entries.end() ? nullptr : &found->second;
}

const std::string* findString(const PropertyListDictionary& entries, std::string_view key) {
  const PropertyList* entry = findEntry(entries, key);
  return entry ? entry->string() : nullptr;
}

const PropertyListDictionary* findDictionary(const PropertyListDictionary& entries,
                                             std::string_view key) {
  const PropertyList* entry = findEntry(entries, key);
  return entry ? entry->dictionary() : nullptr;
}

}  // namespace quenlet
