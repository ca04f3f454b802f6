#pragma once

#include <optional>
#include <string>

#include "platform/foundation/PropertyList.h"
#include "quenlet/Error.h"

namespace quenlet {

// The file of a user's preferences and defaults, relative to the home directory.
inline constexpr char PreferencesPath[] = "Library/Preferences/ovaro.quenlet.plist";
// Holds the date of the last daily report that was not too early.
inline constexpr char LastMetricsAttemptKey[] = "last-metrics-attempt";

// Small facts that outlive the process, by key. Thread-safe.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;
  // The object last set for `key` by any process; nothing if it is missing or cannot be read.
  [[nodiscard]] virtual std::optional<PropertyList> objectForKey(const std::string& key) = 0;
  // Durable when it returns null. After an error nothing has changed.
  [[nodiscard]] virtual ErrorPtr setObject(PropertyList object, const std::string& forKey) = 0;
};

}  // namespace quenlet
