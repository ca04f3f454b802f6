#pragma once

#include <optional>
#include <string>

#include "platform/foundation/Date.h"

namespace quenlet {

// Where a value comes from: the donor, its donation, an optional cluster of donations that belong
// together, and the span for which it is good. A value type.
struct ValueOrigin final {
  std::string bundleIdentifier;
  std::string donationIdentifier;
  std::optional<std::string> clusterIdentifier;
  Date donationDate;
  Date expirationDate;

  friend bool operator==(const ValueOrigin&, const ValueOrigin&);
};

}  // namespace quenlet
