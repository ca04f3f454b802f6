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

  static void encode(WireEncoder& encoder, const std::shared_ptr<const Account>& account);
  // Reads one value; an invalidArguments error when it is neither null nor a whole account of at
  // most 100,000 values.
  [[nodiscard]] static Result<std::shared_ptr<const Account>> decode(WireReader& reader);
};

}  // namespace quenlet
