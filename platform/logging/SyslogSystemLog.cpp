#include "platform/logging/SyslogSystemLog.h"

#include <syslog.h>

#include <utility>

namespace quenlet {
namespace {

constexpr int defaultLevel = LOG_NOTICE;

// syslog(3) keeps the pointer, so that the name has to outlive everything.
void openOnce(const std::string& subsystem) {
  static const std::string& ident = *new std::string(subsystem);
  static const bool opened = [] {
    ::openlog(ident.c_str(), LOG_PID, LOG_USER);
    return true;
  }();
  static_cast<void>(opened);
}

}  // namespace

SyslogSystemLog::SyslogSystemLog(const std::string& subsystem, std::string categoryOfLines)
    : category(std::move(categoryOfLines)) {
  openOnce(subsystem);
}

bool SyslogSystemLog::isDefaultLevelEnabled() const {
  return (::setlogmask(0) & LOG_MASK(defaultLevel)) != 0;
}

void SyslogSystemLog::write(const std::string& line) {
  ::syslog(defaultLevel, "%s: %s", category.c_str(), line.c_str());
}

}  // namespace quenlet
