#pragma once

#include <vector>

#include "platform/accounts/Account.h"
#include "platform/foundation/Either.h"

namespace quenlet {

// The owner's accounts as they stand now. Thread-safe.
class AccountStore {
 public:
  virtual ~AccountStore() = default;
  // All accounts, in the store's order. An account that cannot be read is left out; an error means
  // that it is not known which accounts there are.
  [[nodiscard]] virtual Result<std::vector<AccountPtr>> accounts() = 0;
};

}  // namespace quenlet
