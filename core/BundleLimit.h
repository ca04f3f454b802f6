#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "model/DonationValue.h"
#include "platform/foundation/Error.h"
#include "platform/foundation/PropertyList.h"

namespace quenlet {

// Under which bundles a client may donate, replace and remove: the value of its entitlement
// "org.quenlet.bundles". A value type.
class BundleLimit final {
 public:
  static constexpr char entitlement[] = "org.quenlet.bundles";

  // Nothing for a client without the entitlement, who has no limit. A value that is not a list of
  // texts allows nothing.
  [[nodiscard]] static std::optional<BundleLimit> ofEntitlement(
      const std::optional<PropertyList>& value);

  [[nodiscard]] bool allows(const std::string& bundleIdentifier) const;
  [[nodiscard]] bool allows(const DonationValue& value) const {
    return allowsKey(value.bundleKey().text);
  }
  // What a client is told that asks for more (ServiceErrorCode, bundleNotAllowed).
  [[nodiscard]] static ErrorPtr refusal();

 private:
  [[nodiscard]] bool allowsKey(std::string_view key) const { return keys.contains(key); }

  // Identifiers in the form in which they are compared.
  std::set<std::string, std::less<>> keys;
};

}  // namespace quenlet
