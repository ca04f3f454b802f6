#pragma once

#include <vector>

#include "platform/accounts/Account.h"

namespace quenlet {

// The owner's accounts as they stand now. Thread-safe.
class AccountStore {
 public:
  virtual ~AccountStore() = default;
  // All accounts, in the store's order. What cannot be read is left out.
  [[nodiscard]] virtual std::vector<AccountPtr> accounts() = 0;
};

}  // namespace quenlet
