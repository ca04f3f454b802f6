#pragma once

#include <cstddef>
#include <string>

#include "quenlet/Error.h"

namespace quenlet {

inline constexpr char PropertyListErrorDomain[] = "ovaro.quenlet.property-list-error";

// The codes of PropertyListErrorDomain.
enum class PropertyListErrorCode {
  // Bytes that are not UTF-8, or characters that XML cannot hold.
  invalidText = 1,
  // A number or date that is not finite.
  nonFiniteNumber = 2,
  // Containers nested more deeply than the limit.
  nestingTooDeep = 3,
  tooLarge = 4,
  // An encoding other than UTF-8, by the first bytes or by declaration.
  unsupportedEncoding = 5,
  // A document type with declarations.
  documentTypeWithContent = 6,
  malformedMarkup = 7,
  // An entity that XML itself does not define, or a character reference that names none.
  invalidReference = 8,
  // Elements, attributes or text where the format has none.
  unexpectedContent = 9,
  // The content of a number, date, data or boolean element is malformed.
  invalidValue = 10,
};

[[nodiscard]] ErrorPtr makePropertyListError(PropertyListErrorCode code, std::string sentence);
// The same, with the place in the input added to the sentence.
[[nodiscard]] ErrorPtr makePropertyListError(PropertyListErrorCode code, std::string sentence,
                                             std::size_t offsetInBytes);

}  // namespace quenlet
