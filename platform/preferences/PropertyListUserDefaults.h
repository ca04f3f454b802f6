#pragma once

#include <chrono>
#include <filesystem>
#include <memory>

#include "platform/files/PropertyListFile.h"
#include "platform/preferences/UserDefaults.h"

namespace quenlet {

// User defaults in a property-list file, one entry per key. Thread-safe. Other keys in the file,
// known or not, survive each write. If the file is damaged or cannot be read, the write fails and
// the file stays as it is. setObject() blocks until the file layer's writer thread has written: do
// not call it on that thread. It also waits for other programs that change the file.
class PropertyListUserDefaults final : public UserDefaults {
 public:
  // `lockPatience` is how long setObject() waits for the file's lock.
  PropertyListUserDefaults(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy,
                           std::chrono::milliseconds lockPatience = LockFile::usualPatience);

  [[nodiscard]] std::optional<PropertyList> objectForKey(const std::string& key) override;
  [[nodiscard]] ErrorPtr setObject(PropertyList object, const std::string& forKey) override;

 private:
  const PropertyListFile file;
};

}  // namespace quenlet
