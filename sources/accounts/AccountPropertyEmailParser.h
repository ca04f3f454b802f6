#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "platform/accounts/Account.h"

namespace quenlet {

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

}  // namespace quenlet
