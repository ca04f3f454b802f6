#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/foundation/PropertyList.h"
#include "quenlet/Result.h"

namespace quenlet {

class AccountStore;

// The kind of an account ("ovaro.account.jabber").
struct AccountType final {
  std::optional<std::string> identifier = {};
  friend bool operator==(const AccountType&, const AccountType&) = default;
};

// One account of the owner's account store, as it was when it was read. A value type.
struct Account final {
  // The limit for values in the property-list form, counting containers and the account itself. No
  // real account comes near it.
  static constexpr std::size_t maximumValues = 100'000;

  std::string identifier = {};
  std::optional<AccountType> accountType = {};
  std::optional<std::string> username = {};
  bool isActive = false;
  std::set<std::string> enabledDataclasses = {};
  PropertyListDictionary properties = {};
  // The store that the account came from, if it still exists. Not part of the account's value: it
  // is neither compared nor sent.
  std::weak_ptr<AccountStore> accountStore = {};

  // For a log or a terminal: identifier and type, no personal values.
  [[nodiscard]] std::string description() const;

  // Keys "identifier", "type", "username", "active", "dataClasses", "properties"; absent optionals
  // are left out.
  [[nodiscard]] PropertyListDictionary propertyListRepresentation() const;
  // Nothing when the identifier is missing or empty, or a known key has a value of the wrong type.
  [[nodiscard]] static std::optional<Account> initWithPropertyListRepresentation(
      const PropertyListDictionary& entries);

  friend bool operator==(const Account& left, const Account& right);
};

using AccountPtr = std::shared_ptr<const Account>;

// The owner's current accounts. Thread-safe.
class AccountStore {
 public:
  virtual ~AccountStore() = default;
  // All accounts, in the store's order, without those that cannot be read. An error means that the
  // set of accounts is unknown.
  [[nodiscard]] virtual Result<std::vector<AccountPtr>> accounts() = 0;
};

}  // namespace quenlet
