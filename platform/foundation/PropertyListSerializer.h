#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/foundation/PropertyList.h"
#include "platform/foundation/PropertyListError.h"
#include "quenlet/Result.h"

namespace quenlet {

// Reads and writes property lists in their XML text form. Stateless; any thread.
//
// Written: an XML declaration, the root <plist version="1.0">, no document type; keys in ascending
// order. Dates have whole seconds; reals read back bit for bit.
//
// Read: the same, with or without a document type, up to `maximumSizeInBytes` bytes and with
// containers nested up to `maximumNesting` deep. Comments and processing instructions are skipped.
// Everything else that the format does not know is an error: other elements or attributes, text
// between elements, a document type with declarations, entities other than XML's own five, an
// encoding other than UTF-8. When a key occurs twice, the last entry counts.
class PropertyListSerializer final {
 public:
  static constexpr int maximumNesting = 64;
  static constexpr std::size_t maximumSizeInBytes = std::size_t{1} << 30;

  // The text of `object`. An error (PropertyListErrorDomain) for anything that the format cannot
  // hold: text that is not valid UTF-8 or has control characters that XML forbids, a non-finite
  // number or date, nesting beyond the limit, a result too large to be read back.
  [[nodiscard]] static Result<std::string> dataWithObject(const PropertyList& object);

  // The object of `data`, or an error (PropertyListErrorDomain) whose sentence says what is wrong
  // and never quotes the content.
  [[nodiscard]] static Result<PropertyList> objectWithData(std::string_view data);
};

}  // namespace quenlet
