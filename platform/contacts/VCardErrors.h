#pragma once

#include <cstddef>
#include <string>

#include "platform/contacts/ContactStore.h"
#include "quenlet/Error.h"

namespace quenlet {

// An error of a card, with its line. `offence` is a fixed sentence and never quotes the line.
[[nodiscard]] inline ErrorPtr makeVCardError(ContactErrorCode code, std::size_t lineNumber,
                                             const char* offence) {
  return makeError(ContactErrorDomain, static_cast<int>(code),
                   "line " + std::to_string(lineNumber) + ": " + offence);
}

[[nodiscard]] inline ErrorPtr makeInvalidVCardError(std::size_t lineNumber, const char* offence) {
  return makeVCardError(ContactErrorCode::invalidCard, lineNumber, offence);
}

}  // namespace quenlet
