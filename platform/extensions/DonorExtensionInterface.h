#pragma once

#include <cstddef>

#include "platform/foundation/Error.h"
#include "platform/ipc/ServiceInterface.h"

namespace quenlet {

// What the agent asks of a donor extension over its socket.
struct DonorExtensionSelector final {
  // A donated value; its new expiration date or null, an error or null.
  static constexpr char renew[] = "renewExpirationDateForDonatedValue:acknowledgementHandler:";
  // The reason; the donated values or null, an error or null.
  static constexpr char redonate[] = "redonateAllValuesWithReason:";
};

[[nodiscard]] ServiceInterface makeDonorExtensionInterface();

// The text of an error from an extension is cut to this before it comes to a log or a terminal.
inline constexpr std::size_t maximumDonorErrorTextInBytes = 1024;
// The same error with its domain and its sentence at most that long together, on one line,
// and without other user info. Null for null.
[[nodiscard]] ErrorPtr boundedDonorError(const ErrorPtr& error);

}  // namespace quenlet
