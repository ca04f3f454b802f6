#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "model/DonationValue.h"
#include "platform/accounts/Account.h"
#include "platform/contacts/PersonNameComponents.h"

namespace quenlet {

// Finds the owner's name among an account's properties. Stateless; any thread. A property of an
// unexpected type counts as absent.
class AccountPropertyNameParser final {
 public:
  AccountPropertyNameParser() = delete;

  // The first name that has a given or a family name, from: "firstName" and "lastName";
  // "ZeltPropertyFullName"; "FullUserName"; "ZeltPropertyFullName" of one of
  // "kCalDAVPrincipalsKey"; "FullName" of one of "CalDAVPrincipals".
  [[nodiscard]] static std::optional<PersonNameComponents> parseNameWithAccount(
      const Account& account);
};

// Finds one e-mail address of the owner in an account. Stateless; any thread. A property of an
// unexpected type counts as absent.
class AccountPropertyEmailParser final {
 public:
  struct LabeledAddress final {
    std::string address;
    std::string label;
  };

  // Types of accounts whose user names look like e-mail addresses but are not.
  static constexpr std::array<std::string_view, 1> blacklistedAccountTypes = {
      "ovaro.account.jabber"};

  AccountPropertyEmailParser() = delete;

  // The first address found, labelled LabelHome, in: the user name; "primaryEmail";
  // "IdentityEmailAddress"; "userName"; "qualifiedUsername"; "RuvoAccountEmailAddress".
  //
  // "primaryEmail" is taken as it stands, unless "ovaroId" holds an integer or the address is one
  // of the identity service. It alone counts for accounts of a blacklisted type.
  [[nodiscard]] static std::optional<LabeledAddress> parseEmailWithAccount(const Account& account);
  // The first address in a text that may be absent.
  [[nodiscard]] static std::optional<std::string> firstEmailAddressIn(
      const std::optional<std::string>& text);
};

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

  const Date donationDate;
  const Date expirationDate;
};

}  // namespace quenlet
