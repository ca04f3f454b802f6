#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/ipc/WireReader.h"

namespace quenlet {

// A token of the wire format: a whole plain value, or the head of a container. A value type.
struct WireToken final {
  WireType type = WireType::null;
  // The bits of a boolean, integer, real or date; the number of values that follow a head.
  std::uint64_t number = 0;
  // The bytes of a string or data, or the class name of an object; a view into the bytes read.
  std::string_view text;

  [[nodiscard]] bool isHead() const { return type >= WireType::list; }

  // Takes one token off the front of `rest`. Returns nothing, with `rest` unspecified, when the
  // bytes are malformed or end too early. The number of values never exceeds the bytes left, since
  // each takes at least one. Does not check the encoding of text.
  [[nodiscard]] static std::optional<WireToken> take(std::string_view& rest);
};

}  // namespace quenlet
