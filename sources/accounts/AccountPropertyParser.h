#pragma once

#include <cstdint>
#include <string>

#include "model/DonationValue.h"
#include "platform/accounts/Account.h"

namespace quenlet {

// Reads from an account what it says of its owner: a name and one e-mail address at most.
// Immutable; any thread.
class AccountPropertyParser final {
 public:
  static constexpr double defaultDonationTTLSeconds = 7776000.0;
  static constexpr const char* bundleIdentifier = AccountsBundleIdentifier;
  // Goes up when accounts are read differently, so that all of them are read again.
  static constexpr std::int64_t parserVersion = 3;

  AccountPropertyParser(Date donation, Date expiration)
      : donationDate(donation), expirationDate(expiration) {}

  // The name, then the e-mail address, each if there is one.
  [[nodiscard]] DonationValues parseWithAccount(const Account& account) const;
  [[nodiscard]] DonationOrigin makeOriginWithDonationIdentifier(
      std::string donationIdentifier, std::string clusterIdentifier) const;
  // Whether both say the same of their owner; null equals null only.
  [[nodiscard]] static bool isAccountEqualTo(const AccountPtr& account, const AccountPtr& equalTo);

  const Date donationDate;
  const Date expirationDate;
};

}  // namespace quenlet
