#pragma once

#include <string>

#include "quenlet/Error.h"
#include "quenlet/ErrorCodes.h"

namespace quenlet {

[[nodiscard]] inline ErrorPtr makeDonationError(DonationErrorCode code,
                                                std::string debugDescription) {
  return makeError(DonationErrorDomain, static_cast<std::int64_t>(code),
                   std::move(debugDescription));
}

}  // namespace quenlet
