#pragma once

#include <optional>
#include <set>
#include <string>

#include "platform/foundation/PropertyList.h"

namespace quenlet {

// The kind of an account ("ovaro.account.jabber").
struct AccountType final {
  std::optional<std::string> identifier = {};
  friend bool operator==(const AccountType&, const AccountType&) = default;
};

// One account of the owner's account store, as it stood when it was read. A value type.
struct Account final {
  std::string identifier = {};
  std::optional<AccountType> accountType = {};
  std::optional<std::string> username = {};
  bool isActive = false;
  std::set<std::string> enabledDataclasses = {};
  PropertyListDictionary properties = {};

  // Keys "identifier", "type", "username", "active", "dataClasses", "properties"; absent optionals
  // are left out.
  [[nodiscard]] PropertyListDictionary propertyListRepresentation() const;
  // Nothing when the identifier is missing or empty, or a known key holds another type.
  [[nodiscard]] static std::optional<Account> initWithPropertyListRepresentation(
      const PropertyListDictionary& entries);

  friend bool operator==(const Account&, const Account&) = default;
};

}  // namespace quenlet
