#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "browser/host/CardReading.h"

namespace quenlet {

// The answer to "card": one JSON object, described in docs/browser.md. Stateless.
class CardAnswer final {
 public:
  // Chromium takes no longer message from a host.
  static constexpr std::size_t mostBytes = std::size_t{1} << 20;
  // A larger picture would leave no room for the rest.
  static constexpr std::size_t mostBytesInPicture = std::size_t{512} << 10;
  // Beyond these an entry is not for a form, and a list not for a person.
  static constexpr std::size_t mostBytesInText = 1000;
  static constexpr std::size_t mostEntries = 50;
  static constexpr std::size_t mostLeftOut = 200;

  CardAnswer() = delete;

  // At most `mostBytes` long. What does not fit is left out, and the notes say so.
  [[nodiscard]] static std::string to(std::int64_t request, const CardReading& reading);
};

}  // namespace quenlet
