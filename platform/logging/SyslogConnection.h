#pragma once

#include <memory>
#include <string>

#include "platform/logging/DetachedLineWriter.h"

namespace quenlet {

// A process's use of syslog(3) under one name, for the facility of user processes at the level
// "notice". Thread-safe.
//
// Nobody waits for a syslog daemon: one that has stalled gets the lines when it goes on, up to a
// few hundred. Where none listens, a line is dropped: it goes neither to the console nor to
// standard error.
class SyslogConnection final {
 public:
  struct Functions final {
    void (*openLog)(const char* ident, int options, int facility);
    int (*setLogMask)(int mask);
    void (*write)(int priority, const char* line);
  };

  // syslog(3) keeps the pointer to the name: while anything is written through `functions`, this
  // object lives.
  SyslogConnection(std::string ident, Functions functions);
  SyslogConnection(const SyslogConnection&) = delete;
  SyslogConnection& operator=(const SyslogConnection&) = delete;

  // The process's own, over the C library, under the name that the first call gives.
  [[nodiscard]] static const std::shared_ptr<SyslogConnection>& shared(const std::string& ident);

  // As setlogmask(3) said at the beginning: the C library lets nobody ask while a line is stuck.
  [[nodiscard]] bool isLevelEnabled() const { return levelEnabled; }
  void write(std::string line) { writer->write(std::move(line)); }

 private:
  const std::string ident;
  const std::shared_ptr<DetachedLineWriter> writer;
  bool levelEnabled;
};

}  // namespace quenlet
