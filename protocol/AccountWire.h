#pragma once

#include <memory>

#include "platform/accounts/Account.h"
#include "platform/ipc/WireEncoder.h"
#include "platform/ipc/WireReader.h"
#include "quenlet/Result.h"

namespace quenlet {

// An account on the wire: an object of class "Account" with its property-list form as content, or
// null for no account. Stateless.
class AccountWire final {
 public:
  static constexpr char className[] = "Account";

  static void encode(WireEncoder& encoder, const AccountPtr& account);
  // Reads one value. Errors: invalidArguments when it is neither null nor a complete account of at
  // most Account::maximumValues; notSerializable when a property list cannot hold it. The account
  // gets `accountStore` as its store.
  [[nodiscard]] static Result<AccountPtr> decode(WireReader& reader,
                                                 std::weak_ptr<AccountStore> accountStore);
};

}  // namespace quenlet
