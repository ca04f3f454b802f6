#pragma once

#include <cstdint>
#include <string>

#include "model/DonationValue.h"
#include "platform/accounts/Account.h"

namespace quenlet {

// Reads from an account its owner's name and e-mail address, at most one each. Immutable; any
// thread.
class AccountPropertyParser final {
 public:
  static constexpr double defaultDonationTTLSeconds = 7776000.0;
  static constexpr const char* bundleIdentifier = AccountsBundleIdentifier;
  // Increased when accounts are read differently, so that all are read again.
  static constexpr std::int64_t parserVersion = 3;

  AccountPropertyParser(Date donation, Date expiration)
      : donationDate(donation), expirationDate(expiration) {}
  // For values that are donated now and good for defaultDonationTTLSeconds.
  [[nodiscard]] static AccountPropertyParser parserForNow();

  // The name, then the e-mail address, each if there is one. The account's identifier is the
  // cluster, so that both can be rejected together.
  [[nodiscard]] DonationValues parseWithAccount(const Account& account) const;
  [[nodiscard]] DonationOrigin makeOriginWithDonationIdentifier(
      std::string donationIdentifier, std::string clusterIdentifier) const;
  // The identifiers under which an account's values are donated, whether or not it has them.
  [[nodiscard]] static std::string nameIdentifierOf(const Account& account);
  [[nodiscard]] static std::string emailIdentifierOf(const Account& account);
  // Whether both give the same values; null equals null only.
  [[nodiscard]] static bool isAccountEqualTo(const AccountPtr& account, const AccountPtr& equalTo);

  const Date donationDate;
  const Date expirationDate;
};

}  // namespace quenlet
