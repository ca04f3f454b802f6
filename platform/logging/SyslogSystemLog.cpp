#include "platform/logging/SyslogSystemLog.h"

#include <syslog.h>

#include <utility>

namespace quenlet {
namespace {

constexpr int level = LOG_NOTICE;

void writeToSyslog(int priority, const char* line) { ::syslog(priority, "%s", line); }

}  // namespace

SyslogConnection::SyslogConnection(std::string name, Functions functions)
    : ident(std::move(name)),
      writer(DetachedLineWriter::make(
          [write = functions.write](const std::string& line) { write(level, line.c_str()); })) {
  functions.openLog(ident.c_str(), LOG_PID, LOG_USER);
  // A mask of 0 asks for the present one without changing it.
  levelEnabled = (functions.setLogMask(0) & LOG_MASK(level)) != 0;
}

const std::shared_ptr<SyslogConnection>& SyslogConnection::shared(const std::string& ident) {
  // Never destroyed: a line may be on its way until the process ends.
  static const auto& connection =
      *new std::shared_ptr<SyslogConnection>(std::make_shared<SyslogConnection>(
          ident, Functions{&::openlog, &::setlogmask, &writeToSyslog}));
  return connection;
}

}  // namespace quenlet
