#pragma once

#include <optional>
#include <string>

#include "platform/foundation/Error.h"
#include "platform/foundation/PropertyList.h"

namespace quenlet {

// The file of a user's preferences and defaults, from the home directory.
inline constexpr char PreferencesPath[] = "Library/Preferences/ovaro.quenlet.plist";
// Holds the date of the last daily report that did not come too soon.
inline constexpr char LastMetricsAttemptKey[] = "last-metrics-attempt";

// Small facts that outlive the process, by key. Thread-safe.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;
  // The object last set for `key`, by whichever process; nothing when there is none or it cannot be
  // read.
  [[nodiscard]] virtual std::optional<PropertyList> objectForKey(const std::string& key) = 0;
  // Durable when it returns; an error when it could not be written, and then nothing changed.
  [[nodiscard]] virtual ErrorPtr setObject(PropertyList object, const std::string& forKey) = 0;
};

}  // namespace quenlet
