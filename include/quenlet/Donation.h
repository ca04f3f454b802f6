#pragma once

#include <optional>
#include <string>
#include <variant>

#include "quenlet/Date.h"
#include "quenlet/Values.h"

namespace quenlet {

// One value that a program donates. A value type.
//
// A donation replaces the one with the same donation identifier, even another donor's: begin
// identifiers with the bundle identifier. The agent logs all three identifiers, so they must not
// contain personal values.
struct Donation final {
  static constexpr double standardLifetimeSeconds = 90 * 86400.0;

  std::variant<Name, Email, Phone, Postal, Image> content = {};
  std::string bundleIdentifier = {};    // of the donor, as in "com.example.mail"; not empty
  std::string donationIdentifier = {};  // as in "com.example.mail:account-1:email"; not empty
  // Donations with the same cluster identifier can be rejected together.
  std::optional<std::string> clusterIdentifier = {};
  Date donationDate = Date::now();
  // The first agent to start after this date drops the donation, unless an extension renews it.
  Date expirationDate = Date::now().addingSeconds(standardLifetimeSeconds);

  friend bool operator==(const Donation&, const Donation&) = default;
};

}  // namespace quenlet
