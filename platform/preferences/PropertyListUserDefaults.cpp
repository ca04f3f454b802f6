#include "platform/preferences/PropertyListUserDefaults.h"

#include <utility>

namespace quenlet {

PropertyListUserDefaults::PropertyListUserDefaults(std::filesystem::path path,
                                                   std::shared_ptr<DataProxy> dataProxy,
                                                   std::chrono::milliseconds lockPatience)
    : file(std::move(path), std::move(dataProxy), lockPatience) {}

std::optional<PropertyList> PropertyListUserDefaults::objectForKey(const std::string& key) {
  const Result<PropertyListDictionary> entries = file.read();
  if (!entries.ok()) return std::nullopt;
  const PropertyList* object = findEntry(entries.value(), key);
  return object ? std::optional(*object) : std::nullopt;
}

ErrorPtr PropertyListUserDefaults::setObject(PropertyList object, const std::string& forKey) {
  const auto change = [&](PropertyListDictionary& entries) {
    entries.insert_or_assign(forKey, std::move(object));
    return true;
  };
  // A damaged file may hold a preference that must not be lost.
  const Future<bool> written = file.update(change, PropertyListFile::OnDamage::fail);
  const Result<bool>& outcome = written.result();
  return outcome.ok() ? nullptr : outcome.error();
}

}  // namespace quenlet
