#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "quenlet/Error.h"

namespace quenlet {

inline constexpr char ExtensionErrorDomain[] = "ovaro.quenlet.extension-error";
enum class ExtensionErrorCode {
  notInstalled = 1,         // no manifest names the bundle
  cannotStart = 2,          // the program is missing, cannot be trusted or cannot be executed
  ended = 3,                // the program ended, or closed its socket, before its answer
  timedOut = 4,             // no answer in time
  badAnswer = 5,            // the program sent something invalid
  hostGone = 6,             // the agent ends
  manifestsUnreadable = 7,  // a manifest directory is there, but cannot be read
  foreignDonation = 8,      // a re-donation holds a value of another bundle
  donorFailed = 9,          // the donor's own code threw an exception
};

[[nodiscard]] inline ErrorPtr makeExtensionError(ExtensionErrorCode code,
                                                 std::string debugDescription) {
  return makeError(ExtensionErrorDomain, static_cast<std::int64_t>(code),
                   std::move(debugDescription));
}

}  // namespace quenlet
