#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/ipc/WireReader.h"

namespace quenlet {

// One step of the wire's form: a whole plain value, or the head of a container. A value type.
struct WireToken final {
  WireType type = WireType::null;
  // The bits of a boolean, integer, real or date; the number of values that follow a head.
  std::uint64_t number = 0;
  // The bytes of a string or data, the class name of an object; views into the bytes read.
  std::string_view text;

  [[nodiscard]] bool isHead() const { return type >= WireType::list; }

  // Takes one token off the front of `rest`. Nothing, and `rest` is left anywhere, when the bytes
  // are no token or end too early. A number of values never exceeds the bytes that are left, as
  // each value takes one at least. Does not look at the encoding of text.
  [[nodiscard]] static std::optional<WireToken> take(std::string_view& rest);
};

}  // namespace quenlet
