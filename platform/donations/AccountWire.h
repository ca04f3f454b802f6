#pragma once

#include <memory>

#include "platform/accounts/Account.h"
#include "platform/foundation/Either.h"
#include "platform/ipc/WireEncoder.h"
#include "platform/ipc/WireReader.h"

namespace quenlet {

// How an account travels: an object of class "Account" with its property-list form as content, or
// null for no account. Stateless.
class AccountWire final {
 public:
  static constexpr char className[] = "Account";

  static void encode(WireEncoder& encoder, const AccountPtr& account);
  // Reads one value; an invalidArguments error when it is neither null nor a whole account of at
  // most Account::maximumValues, notSerializable for one that no property list can hold. The
  // account is one of `accountStore`.
  [[nodiscard]] static Result<AccountPtr> decode(WireReader& reader,
                                                 std::weak_ptr<AccountStore> accountStore);
};

}  // namespace quenlet
