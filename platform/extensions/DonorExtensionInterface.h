#pragma once

#include <cstddef>

#include "platform/ipc/ServiceInterface.h"
#include "quenlet/Error.h"

namespace quenlet {

// The operations that the agent calls on a donor extension over its socket.
struct DonorExtensionSelector final {
  // Takes a donated value; replies its new expiration date or null, and an error or null.
  static constexpr char renew[] = "renewExpirationDateForDonatedValue:acknowledgementHandler:";
  // Takes the reason; replies the donated values or null, and an error or null.
  static constexpr char redonate[] = "redonateAllValuesWithReason:";
};

[[nodiscard]] ServiceInterface makeDonorExtensionInterface();

// The text of an extension's error is cut to this size before it is logged or shown.
inline constexpr std::size_t maximumDonorErrorTextInBytes = 1024;
// The same error with its domain and sentence cut to that size together, on one line, and without
// other user info. Null for null.
[[nodiscard]] ErrorPtr boundedDonorError(const ErrorPtr& error);

}  // namespace quenlet
