#pragma once

#include <optional>

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

}  // namespace quenlet
