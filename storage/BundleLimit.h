#pragma once

#include <optional>
#include <set>
#include <string>

#include "model/DonationValue.h"
#include "platform/foundation/PropertyList.h"
#include "quenlet/Error.h"

namespace quenlet {

// The bundles under which a client may donate, replace and remove, as its BundlesEntitlement
// lists them. A value type.
class BundleLimit final {
 public:
  // Nothing without the entitlement: such a client has no limit. A value that is not a list of
  // texts allows no bundle.
  [[nodiscard]] static std::optional<BundleLimit> ofEntitlement(
      const std::optional<PropertyList>& value);

  [[nodiscard]] bool allows(const std::string& bundleIdentifier) const;
  [[nodiscard]] bool allows(const DonationValue& value) const {
    return allowed.contains(value.bundleKey());
  }
  // The error for a request beyond the limit (ServiceErrorCode, bundleNotAllowed).
  [[nodiscard]] static ErrorPtr refusal();

 private:
  std::set<Fingerprint> allowed;
};

}  // namespace quenlet
