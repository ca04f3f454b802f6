#pragma once

#include <optional>
#include <string>

#include "platform/contacts/PostalAddress.h"

namespace quenlet {

enum class CountryName { included, leftOut };

// Lays postal addresses out as text. Stateless; any thread.
class PostalAddressFormatter final {
 public:
  // The address on one line: street lines, sub-locality, city, sub-administrative area, state and
  // postal code, then the country if requested, separated by ", ". Blanks around parts are dropped.
  // Nothing when no part is left. Equal addresses give equal text.
  [[nodiscard]] static std::optional<std::string> singleLineStringFromPostalAddress(
      const PostalAddress& address, CountryName addCountryName);
};

}  // namespace quenlet
