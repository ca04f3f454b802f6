#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "model/DonationValue.h"
#include "platform/foundation/Future.h"

namespace quenlet {

// Versions of donors' data, by bundle identifier.
using ExtensionVersions = std::map<std::string, std::int64_t>;

// Keeps the agent's state across restarts. Thread-safe. Loads never fail: a file that cannot be
// read is empty.
class DonationPersistenceProtocol {
 public:
  virtual ~DonationPersistenceProtocol() = default;
  // The stored donations, in the order in which they were stored.
  [[nodiscard]] virtual Future<DonationValues> loadDonations() = 0;
  // Replaces what is stored by `values`; true once they are durable.
  [[nodiscard]] virtual Future<bool> storeWithAllValues(
      const std::shared_ptr<const DonationValues>& values) = 0;
  [[nodiscard]] virtual Future<ExtensionVersions> loadExtensionVersions() = 0;
  [[nodiscard]] virtual Future<bool> storeWithExtensionVersions(
      const ExtensionVersions& versions) = 0;

  // The most bytes that the property-list texts of all stored donations may take together.
  [[nodiscard]] virtual std::size_t capacityInBytes() const = 0;
  // Keeps a copy of the stored donations, which the next store leaves alone. If no copy can be
  // made, that store fails.
  virtual void keepStoredDonations() = 0;
};

}  // namespace quenlet
