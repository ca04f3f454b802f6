#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/foundation/PropertyList.h"

namespace quenlet {

// Appends values in the wire format to a buffer, without building a tree first. Containers announce
// their number of elements. See docs/wire-format.md. One thread at a time.
class WireEncoder final {
 public:
  WireEncoder& null();
  WireEncoder& boolean(bool value);
  WireEncoder& integer(std::int64_t value);
  WireEncoder& real(double value);
  WireEncoder& date(Date value);
  WireEncoder& string(std::string_view text);
  WireEncoder& data(std::string_view bytes);
  // `count` values follow.
  WireEncoder& list(std::size_t count);
  // `count` pairs of a string and a value follow.
  WireEncoder& dictionary(std::size_t count);
  // One value follows, the object's content.
  WireEncoder& object(std::string_view className);
  WireEncoder& propertyList(const PropertyList& value);
  WireEncoder& propertyList(const PropertyListDictionary& entries);
  // Appends values that are already encoded.
  WireEncoder& encoded(std::string_view bytes);

  [[nodiscard]] const std::string& bytes() const { return buffer; }
  [[nodiscard]] std::string take() && { return std::move(buffer); }

 private:
  std::string buffer;
};

}  // namespace quenlet
