#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "model/DonationValue.h"
#include "platform/foundation/Future.h"

namespace quenlet {

// Versions of donors' data, by bundle identifier.
using ExtensionVersions = std::map<std::string, std::int64_t>;

// Keeps the agent's state across restarts. Thread-safe. Loads never fail: what cannot be read is
// empty.
class DonationPersistenceProtocol {
 public:
  virtual ~DonationPersistenceProtocol() = default;
  // The stored donations, in the order in which they were stored.
  [[nodiscard]] virtual Future<DonationValues> loadDonations() = 0;
  // Replaces what is stored by `values`; true once they are durable.
  [[nodiscard]] virtual Future<bool> storeWithAllValues(const DonationValues& values) = 0;
  [[nodiscard]] virtual Future<ExtensionVersions> loadExtensionVersions() = 0;
  [[nodiscard]] virtual Future<bool> storeWithExtensionVersions(
      const ExtensionVersions& versions) = 0;

  // How many bytes the property-list texts of stored donations may have together.
  [[nodiscard]] virtual std::size_t capacityInBytes() const = 0;
  // Keeps a copy of the donations as they are stored, which the next store does not touch. What
  // cannot be kept fails that store.
  virtual void keepStoredDonations() = 0;
};

}  // namespace quenlet
