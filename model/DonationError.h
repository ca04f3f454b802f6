#pragma once

#include <string>

#include "quenlet/Error.h"

namespace quenlet {

enum class DonationErrorCode {
  featureNotEnabled = 1,
  donorGaveNoAnswer = 2,
  notSerializable = 501,
  topLevelNotADictionary = 502,
};

[[nodiscard]] inline ErrorPtr makeDonationError(DonationErrorCode code,
                                                std::string debugDescription) {
  return makeError(DonationErrorDomain, static_cast<std::int64_t>(code),
                   std::move(debugDescription));
}

}  // namespace quenlet
