#pragma once

#include <string>

namespace quenlet {

// A handle on the system's own log for one subsystem and category. Thread-safe; writing never
// fails.
class SystemLog {
 public:
  virtual ~SystemLog() = default;
  // Whether the log keeps lines of the default level at all.
  [[nodiscard]] virtual bool isDefaultLevelEnabled() const = 0;
  // Writes a line at the default level.
  virtual void write(const std::string& line) = 0;
};

}  // namespace quenlet
