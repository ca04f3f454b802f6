#pragma once

#include <optional>
#include <string>

#include "platform/telephony/PhoneNumberMonitor.h"
#include "quenlet/Error.h"

namespace quenlet {

// Shows lists and errors in the lines about SIM cards. Stateless.
class SIMCardText final {
 public:
  SIMCardText() = delete;

  // One line each: control characters and line breaks of a card or an error become blanks.
  //
  // "[identifier value, identifier value]", "[]" for an empty list, "nothing" for none.
  [[nodiscard]] static std::string of(const std::optional<SIMCardItems>& items);
  // The error's description, "nothing" for null.
  [[nodiscard]] static std::string of(const ErrorPtr& error);
};

}  // namespace quenlet
