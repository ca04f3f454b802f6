#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/foundation/PropertyList.h"

namespace quenlet {

enum class WireType : std::uint8_t {
  null, boolean, integer, real, date, string, data, list, dictionary, object
};

// Reads values in the wire's form, front to back, from bytes that validateWireValues() passed; a
// value of another type than the one asked for is "nothing" and is skipped. Views are into the
// bytes. One thread at a time.
class WireReader final {
 public:
  explicit WireReader(std::string_view validatedBytes) : rest(validatedBytes) {}

  [[nodiscard]] bool atEnd() const { return rest.empty(); }
  // The type of the next value. Not at the end.
  [[nodiscard]] WireType nextType() const;
  std::optional<bool> boolean();
  std::optional<std::int64_t> integer();
  std::optional<std::string_view> string();
  // The number of elements, which are read next.
  std::optional<std::size_t> list();
  // The number of pairs: read string(), then the value, for each.
  std::optional<std::size_t> dictionary();
  // The class name; the content is read next.
  std::optional<std::string_view> object();
  // A whole value as a property list; nothing when it holds null or an object.
  std::optional<PropertyList> propertyList();
  // The bytes of the next value, whatever it is.
  std::string_view skip();

 private:
  std::string_view rest;
};

}  // namespace quenlet
