#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Error.h"
#include "platform/telephony/PhoneNumberMonitor.h"

namespace quenlet {

// What the lines about SIM cards say of lists and errors. Stateless.
class SIMCardText final {
 public:
  SIMCardText() = delete;

  // "[identifier value, identifier value]", "[]" for an empty list, "nothing" for none.
  [[nodiscard]] static std::string of(const std::optional<SIMCardItems>& items);
  // The error's description, "nothing" for null.
  [[nodiscard]] static std::string of(const ErrorPtr& error);
  // A card's text with each control character as "?", so that it cannot begin a line of its own.
  [[nodiscard]] static std::string onOneLine(std::string_view text);
};

}  // namespace quenlet
