#include "platform/foundation/PropertyListError.h"

#include <cstdint>
#include <utility>

namespace quenlet {

ErrorPtr makePropertyListError(PropertyListErrorCode code, std::string sentence) {
  return makeError(PropertyListErrorDomain, static_cast<std::int64_t>(code), std::move(sentence));
}

ErrorPtr makePropertyListError(PropertyListErrorCode code, std::string sentence,
                               std::size_t offsetInBytes) {
  return makePropertyListError(code,
                               std::move(sentence) + " at byte " + std::to_string(offsetInBytes));
}

}  // namespace quenlet
