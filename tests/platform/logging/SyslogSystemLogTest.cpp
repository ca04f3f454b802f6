#include "platform/logging/SyslogSystemLog.h"

#include <gtest/gtest.h>
#include <syslog.h>

#include <algorithm>
#include <future>

namespace quenlet {
namespace {

// In the place of syslog(3), with a daemon that takes no line before it goes on.
std::promise<void> goesOn;
std::promise<void> isFull;
std::promise<void> hasEnded;
std::string told;
int mask = LOG_UPTO(LOG_WARNING);

void write(int priority, const char* line) {
  static const std::shared_future<void> going = goesOn.get_future().share();
  going.wait();
  told += std::to_string(priority) + " " + line + "\n";
  if (std::count(told.begin(), told.end(), '\n') == 1 + DetachedLineWriter::mostLinesWaiting) {
    isFull.set_value();
  }
  if (line == std::string_view("other: end")) hasEnded.set_value();
}

const SyslogConnection::Functions functions = {[](const char* ident, int options, int facility) {
                                                 EXPECT_EQ(options & (LOG_CONS | LOG_PERROR), 0);
                                                 EXPECT_EQ(facility, LOG_USER);
                                                 told = std::string(ident) + "\n";
                                               },
                                               [](int) { return mask; }, &write};

TEST(SyslogSystemLogTest, WritesNoticesInTheirOrderAndWaitsForNoDaemon) {
  EXPECT_FALSE(SyslogConnection("quiet", functions).isLevelEnabled());
  mask = LOG_UPTO(LOG_NOTICE);
  const auto connection = std::make_shared<SyslogConnection>("ovaro.quenlet", functions);
  SyslogSystemLog log(connection, "analytics");
  SyslogSystemLog other(connection, "other");
  EXPECT_TRUE(log.isDefaultLevelEnabled());
  log.write("100%s %n");
  for (int line = 0; line < 1000; ++line) other.write("");
  goesOn.set_value();
  isFull.get_future().wait();
  other.write("end");
  hasEnded.get_future().wait();
  EXPECT_TRUE(told.starts_with("ovaro.quenlet\n5 analytics: 100%s %n\n5 other: \n")) << told;
  EXPECT_LE(std::count(told.begin(), told.end(), '\n'), 300) << "what is too much is dropped";
}

}  // namespace
}  // namespace quenlet
