#include "platform/foundation/PropertyList.h"

#include <algorithm>

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

const PropertyListDictionary* findStringDictionary(const PropertyListDictionary& entries,
                                                   std::string_view key) {
  const PropertyListDictionary* found = findDictionary(entries, key);
  const auto isString = [](const auto& entry) { return entry.second.string() != nullptr; };
  return found && std::ranges::all_of(*found, isString) ? found : nullptr;
}

}  // namespace quenlet
