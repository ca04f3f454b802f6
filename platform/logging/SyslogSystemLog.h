#pragma once

#include <memory>
#include <string>

#include "platform/logging/SyslogConnection.h"
#include "platform/logging/SystemLog.h"

namespace quenlet {

// Writes to syslog, with the category in front of each line: "analytics: User has 1 me cards".
// Thread-safe.
class SyslogSystemLog final : public SystemLog {
 public:
  SyslogSystemLog(std::shared_ptr<SyslogConnection> openConnection, std::string categoryOfLines)
      : connection(std::move(openConnection)), category(std::move(categoryOfLines)) {}
  // Over the process's connection, which is named after the subsystem of the first handle.
  SyslogSystemLog(const std::string& subsystem, std::string categoryOfLines)
      : SyslogSystemLog(SyslogConnection::shared(subsystem), std::move(categoryOfLines)) {}

  [[nodiscard]] bool isDefaultLevelEnabled() const override { return connection->isLevelEnabled(); }
  // Returns at once.
  void write(const std::string& line) override { connection->write(category + ": " + line); }

 private:
  const std::shared_ptr<SyslogConnection> connection;
  const std::string category;
};

}  // namespace quenlet
