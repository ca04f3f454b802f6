#pragma once

#include <vector>

#include "platform/accounts/Account.h"
#include "quenlet/Result.h"

namespace quenlet {

// The owner's current accounts. Thread-safe.
class AccountStore {
 public:
  virtual ~AccountStore() = default;
  // All accounts, in the store's order, without those that cannot be read. An error means that the
  // set of accounts is unknown.
  [[nodiscard]] virtual Result<std::vector<AccountPtr>> accounts() = 0;
};

}  // namespace quenlet
