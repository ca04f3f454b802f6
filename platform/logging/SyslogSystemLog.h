#pragma once

#include <memory>
#include <string>

#include "platform/logging/DetachedLineWriter.h"
#include "platform/logging/SystemLog.h"

namespace quenlet {

// The process's use of syslog(3), under one name, with facility "user" and level "notice".
// Thread-safe.
//
// Never waits for the syslog daemon: when a stalled one goes on, it gets the lines kept until then,
// up to a few hundred. Without a daemon a line is dropped; it goes neither to the console nor to
// standard error.
class SyslogConnection final {
 public:
  struct Functions final {
    void (*openLog)(const char* ident, int options, int facility);
    int (*setLogMask)(int mask);
    void (*write)(int priority, const char* line);
  };

  // syslog(3) keeps the pointer to the name, so this object must outlive all writing through
  // `functions`.
  SyslogConnection(std::string ident, Functions functions);
  SyslogConnection(const SyslogConnection&) = delete;
  SyslogConnection& operator=(const SyslogConnection&) = delete;

  // The process's connection, over the C library, under the name given by the first call.
  [[nodiscard]] static const std::shared_ptr<SyslogConnection>& shared(const std::string& ident);

  // As setlogmask(3) said at construction: the C library blocks the question while a line is stuck.
  [[nodiscard]] bool isLevelEnabled() const { return levelEnabled; }
  void write(std::string line) { writer->write(std::move(line)); }

 private:
  const std::string ident;
  const std::shared_ptr<DetachedLineWriter> writer;
  bool levelEnabled;
};

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
