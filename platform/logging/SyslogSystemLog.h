#pragma once

#include <string>

#include "platform/logging/SystemLog.h"

namespace quenlet {

// Writes to syslog(3), for the facility of user processes at the level "notice", each line after
// its category: "analytics: User has 1 me cards". Thread-safe. Where no syslog daemon listens, a
// line is dropped at once: it goes neither to the console nor to standard error.
class SyslogSystemLog final : public SystemLog {
 public:
  // The name under which syslog shows the lines is one for the whole process: the subsystem of the
  // first handle.
  SyslogSystemLog(const std::string& subsystem, std::string category);

  // As setlogmask(3) says.
  [[nodiscard]] bool isDefaultLevelEnabled() const override;
  void write(const std::string& line) override;

 private:
  const std::string category;
};

}  // namespace quenlet
