#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/foundation/PropertyList.h"

namespace quenlet {

// Where a value comes from: the donor, its donation, an optional cluster of donations that belong
// together, and the span for which it is good. A value type.
struct ValueOrigin final {
  // The dictionary's keys.
  static constexpr char bundleIdentifierKey[] = "bundleIdentifier";
  static constexpr char donationIdentifierKey[] = "donationIdentifier";
  static constexpr char clusterIdentifierKey[] = "clusterIdentifier";
  static constexpr char donationDateKey[] = "donationDate";
  static constexpr char expirationDateKey[] = "expirationDate";

  ValueOrigin(std::string bundle, std::string donation, std::optional<std::string> cluster,
              Date donated, Date expires)
      : bundleIdentifier(std::move(bundle)),
        donationIdentifier(std::move(donation)),
        clusterIdentifier(std::move(cluster)),
        donationDate(donated),
        expirationDate(expires) {}
  // Without a cluster.
  ValueOrigin(std::string bundle, std::string donation, Date donated, Date expires)
      : ValueOrigin(std::move(bundle), std::move(donation), std::nullopt, donated, expires) {}

  std::string bundleIdentifier;
  std::string donationIdentifier;
  std::optional<std::string> clusterIdentifier;
  Date donationDate;
  Date expirationDate;

  // The keys are named as the fields; the cluster identifier may be missing. Dates are reals
  // (seconds since 1970), because the dates of a property list have no fractions.
  [[nodiscard]] PropertyListDictionary dictionaryRepresentation() const;
  // Nothing when the bundle or donation identifier is missing or empty, the cluster identifier is
  // not a string, or a date is missing or not finite. Dates may be reals, integers or dates.
  [[nodiscard]] static std::optional<ValueOrigin> originWithDictionary(
      const PropertyListDictionary& entries);

  friend bool operator==(const ValueOrigin&, const ValueOrigin&);
};

}  // namespace quenlet
