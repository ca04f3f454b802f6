#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "platform/foundation/PropertyList.h"

namespace quenlet {

// The types of value on the wire; the numbers are the wire's own.
enum class WireType : std::uint8_t {
  null,
  boolean,
  integer,
  real,
  date,
  string,
  data,
  list,
  dictionary,
  object
};

struct WireToken;

// Reads values in the wire format, front to back, from bytes that validateWireValues() accepted. A
// value of another type than the one asked for is skipped and read as nothing, as are reads at the
// end. Views point into the bytes. One thread at a time.
class WireReader final {
 public:
  explicit WireReader(std::string_view validatedBytes) : rest(validatedBytes) {}

  [[nodiscard]] bool atEnd() const { return rest.empty(); }
  // The type of the next value; null at the end.
  [[nodiscard]] WireType nextType() const;
  std::optional<bool> boolean();
  std::optional<std::int64_t> integer();
  std::optional<double> real();
  std::optional<Date> date();
  std::optional<std::string_view> string();
  std::optional<std::string_view> data();
  // The number of elements, which are read next. A peer can announce one for each byte of its
  // message: do not reserve memory for that many, let it grow with the elements read.
  std::optional<std::size_t> list();
  // The number of pairs: read string(), then the value, for each.
  std::optional<std::size_t> dictionary();
  // The class name; the content is read next.
  std::optional<std::string_view> object();
  static constexpr std::size_t unbounded = std::numeric_limits<std::size_t>::max();
  // A whole value as a property list. Nothing when it is or contains a null or an object, or has
  // more than `maximumValues` values, counting itself and all in containers: in memory a value
  // takes about 50 times its two bytes on the wire. If keys of a dictionary are equal, the last one
  // counts.
  std::optional<PropertyList> propertyList(std::size_t maximumValues = unbounded);
  // The bytes of the next value, of any type; empty at the end.
  std::string_view skip();

 private:
  // The next token if it has that type; otherwise nothing, and the whole value is skipped.
  std::optional<WireToken> take(WireType type);

  std::string_view rest;
};

}  // namespace quenlet
