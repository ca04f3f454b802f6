#pragma once

#include <chrono>
#include <filesystem>
#include <memory>

#include "platform/donations/PropertyListFile.h"
#include "platform/donations/UserDefaults.h"

namespace quenlet {

// User defaults in a property-list file, one entry a key. Thread-safe. Other keys in the file,
// known or not, survive each write; a file that cannot be read, damaged ones among them, fails it
// and stays as it is. setObject() waits for the file layer's writer thread: do not call it there.
// It waits for other programs at work on the file as well, but not for long.
class PropertyListUserDefaults final : public UserDefaults {
 public:
  // `lockPatience` is how long setObject() lets others have the file's lock.
  PropertyListUserDefaults(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy,
                           std::chrono::milliseconds lockPatience = LockFile::usualPatience);

  [[nodiscard]] std::optional<PropertyList> objectForKey(const std::string& key) override;
  [[nodiscard]] ErrorPtr setObject(PropertyList object, const std::string& forKey) override;

 private:
  const PropertyListFile file;
};

}  // namespace quenlet
