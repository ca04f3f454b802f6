#include "browser/host/CallingExtension.h"

namespace quenlet {

bool CallingExtension::isOurs(std::span<const std::string_view> arguments) {
  if (arguments.empty()) return false;
  // Chromium may add arguments of its own; Firefox gives exactly two.
  if (arguments.front().starts_with("chrome-extension:")) {
    return arguments.front() == chromiumOrigin;
  }
  return arguments.size() == 2 && arguments.front().starts_with('/') &&
         arguments.back() == firefoxIdentifier;
}

}  // namespace quenlet
