#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/foundation/Either.h"
#include "platform/foundation/PropertyList.h"
#include "platform/foundation/PropertyListError.h"

namespace quenlet {

// Reads and writes property lists in their XML text form. Stateless; any thread.
//
// Written: an XML declaration, the root <plist version="1.0"> and no document type, keys in
// ascending order. Dates have whole seconds; reals read back bit for bit.
// Read: the same, with or without a document type, of up to `maximumSizeInBytes` bytes and
// `maximumNesting` containers within each other. Entities other than XML's own five and character
// references are an error, so is anything that the form does not know: other elements or
// attributes, text between elements, a document type that declares something, another encoding than
// UTF-8. Of two entries with the same key the last counts.
class PropertyListSerializer final {
 public:
  static constexpr int maximumNesting = 64;
  static constexpr std::size_t maximumSizeInBytes = std::size_t{1} << 30;

  // The text of `object`. An error (PropertyListErrorDomain) for what the form cannot hold: text
  // that is no valid UTF-8 or has control characters that XML forbids, a non-finite number or date,
  // nesting beyond the limit, a text larger than what can be read.
  [[nodiscard]] static Result<std::string> dataWithObject(const PropertyList& object);

  // The object of `data`, or an error (PropertyListErrorDomain) whose sentence names the offence
  // and never quotes the content.
  [[nodiscard]] static Result<PropertyList> objectWithData(std::string_view data);
};

}  // namespace quenlet
