#pragma once

#include <cstddef>
#include <string>

#include "platform/contacts/ContactStore.h"
#include "platform/foundation/Error.h"

namespace quenlet {

// The error of a card at a line. `offence` is a fixed sentence, never what the line holds.
[[nodiscard]] inline ErrorPtr makeVCardError(ContactErrorCode code, std::size_t lineNumber,
                                             const char* offence) {
  return makeError(ContactErrorDomain, static_cast<int>(code),
                   "line " + std::to_string(lineNumber) + ": " + offence);
}

[[nodiscard]] inline ErrorPtr makeInvalidVCardError(std::size_t lineNumber, const char* offence) {
  return makeVCardError(ContactErrorCode::invalidCard, lineNumber, offence);
}

}  // namespace quenlet
