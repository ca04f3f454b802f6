#pragma once

#include <cstdint>
#include <string_view>

namespace quenlet {

// What the extension asks: {"id": 7, "ask": "card"}, a flat object. Members that this version does
// not know are ignored. A value type.
struct BrowserRequest final {
  enum class Word : std::uint8_t {
    card,
    changes,
    unknown,    // another word; `id` is that of the request
    malformed,  // not an object of that form; `id` is 0
  };

  Word word = Word::malformed;
  std::int64_t id = 0;  // the extension's number for it, not negative

  // Takes any bytes.
  [[nodiscard]] static BrowserRequest parse(std::string_view text);
};

}  // namespace quenlet
