#include "platform/logging/SyslogSystemLog.h"

#include <gtest/gtest.h>
#include <syslog.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <utility>

namespace {

std::string opened;
std::string written;

}  // namespace

// These take the place of the C library's in this program, so that no daemon is needed.
extern "C" {
void openlog(const char* ident, int option, int facility) {
  EXPECT_EQ(option & (LOG_CONS | LOG_PERROR), 0);
  EXPECT_EQ(facility, LOG_USER);
  opened += ident;
}
void syslog(int priority, const char* format, ...) {
  char line[200];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  written += std::to_string(priority) + " " + line + "\n";
}
}

namespace quenlet {
namespace {

TEST(SyslogSystemLogTest, WritesNoticesAfterTheirCategoryUnderOneIdent) {
  SyslogSystemLog log("ovaro.quenlet", "analytics");
  SyslogSystemLog other("ovaro.quenlet", "other");
  log.write("100%s %n");
  other.write("");
  EXPECT_EQ(written, "5 analytics: 100%s %n\n5 other: \n");
  EXPECT_EQ(opened, "ovaro.quenlet");
  EXPECT_TRUE(log.isDefaultLevelEnabled());
  ::setlogmask(LOG_UPTO(LOG_WARNING));
  EXPECT_FALSE(log.isDefaultLevelEnabled());
}

}  // namespace
}  // namespace quenlet
