#include <gtest/gtest.h>
#include <syslog.h>

#include <algorithm>
#include <future>

#include "platform/logging/StructuredAgentLogger.h"
#include "platform/logging/SyslogSystemLog.h"
#include "tests/support/DonationFactory.h"
#include "tests/support/RecordingLog.h"

namespace quenlet {
namespace {

TEST(StructuredAgentLoggerTest, WritesEventsAsJSONWithoutDonatedContent) {
  Trace trace;
  const auto sink = std::make_shared<RecordingLog>(trace);
  StructuredAgentLogger logger(StructuredLog(sink, [] { return Date(0.5); }));

  logger.denyingRequestFromProcess(-7);
  logger.willRenewValues({email("secret@x", from("a\"b", "e")), image("secret", from("b", "i"))},
                         "donor");
  logger.couldNotRejectDonationIdentifier("d", makeError("domain", 3, "why"));
  const std::string head = R"({"time":"1970-01-01T00:00:00Z","event":)";
  EXPECT_EQ(
      sink->lines,
      (std::vector<std::string>{
          head + R"("denyingRequestFromProcess:","arguments":[-7]})",
          head + R"("willRenewValues:withDonor:","arguments":[[)"
                 R"({"kind":"emailAddress","bundleIdentifier":"a\"b","donationIdentifier":"e"},)"
                 R"({"kind":"imageData","bundleIdentifier":"b","donationIdentifier":"i"}],)"
                 R"("donor"]})",
          head + R"("couldNotRejectDonationIdentifier:error:","arguments":["d","domain 3: why"]})",
      }));
}

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

TEST(SyslogSystemLogTest, WritesNoticesInTheirOrderAndWaitsForNoDaemon) {
  const auto open = [](const char* ident, int, int) { told = ident + std::string("\n"); };
  const SyslogConnection::Functions functions = {open, [](int) { return mask; }, &write};
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
