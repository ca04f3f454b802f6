#include <gtest/gtest.h>
#include <syslog.h>

#include <future>
#include <latch>

#include "platform/logging/DonationLoggerProvider.h"
#include "platform/logging/SyslogSystemLog.h"
#include "tests/support/DonationFactory.h"
#include "tests/support/RecordingLog.h"

namespace quenlet {
namespace {

class StructuredLogTest : public testing::Test {
 protected:
  Trace trace;
  const std::shared_ptr<RecordingLog> sink = std::make_shared<RecordingLog>(trace);
  DonationLoggerProvider provider{StructuredLog(sink, [] { return Date(0.5); })};
  const std::shared_ptr<AgentLogger> agent = provider.agentLogger();
  const std::shared_ptr<AccountLogger> accounts = provider.accountLogger();

  // What each line says after the time.
  std::vector<std::string> takeLines() {
    const std::string head = R"({"time":"1970-01-01T00:00:00Z","event":)";
    for (std::string& line : sink->lines) {
      EXPECT_TRUE(line.starts_with(head) && line.ends_with('}')) << line;
      EXPECT_LT(line.size(), StructuredLog::maximumLineSizeInBytes);
      line = line.substr(head.size(), line.size() - head.size() - 1);
    }
    return std::exchange(sink->lines, {});
  }
};

// What the traces of other tests hold is not here: an event's name is one text.
TEST_F(StructuredLogTest, WritesNamesAndEachKindOfArgumentWithoutDonatedContent) {
  const DonationValuePtr mail = email("secret@x", from("a\"b", "e"));
  const std::string mailText =
      R"({"kind":"emailAddress","bundleIdentifier":"a\"b","donationIdentifier":"e"})";
  const std::string bothText =
      "[" + mailText + R"(,{"kind":"imageData","bundleIdentifier":"b","donationIdentifier":"i"}])";
  const ErrorPtr error = makeError("domain", 3, "why");
  const auto account =
      std::make_shared<const Account>(Account{"id", AccountType{"type"}, "secret"});
  const std::string accountText = account->description();
  ASSERT_EQ(accountText.find("secret"), std::string::npos);
  const std::tuple<std::string, std::string, std::function<void()>> rows[] = {
      {"agentDidStart", "", [&] { agent->agentDidStart(); }},
      {"donationServiceWillStart", "", [&] { agent->donationServiceWillStart(); }},
      {"donationServiceDidStart", "", [&] { agent->donationServiceDidStart(); }},
      {"donationServiceWillStop", "", [&] { agent->donationServiceWillStop(); }},
      {"maintenanceServiceWillStart", "", [&] { agent->maintenanceServiceWillStart(); }},
      {"maintenanceServiceDidStart", "", [&] { agent->maintenanceServiceDidStart(); }},
      {"maintenanceServiceWillStop", "", [&] { agent->maintenanceServiceWillStop(); }},
      {"willListRejections", "", [&] { agent->willListRejections(); }},
      {"didListRejections", "", [&] { agent->didListRejections(); }},
      {"accountsDidNotChange", "", [&] { accounts->accountsDidNotChange(); }},
      {"pluginLoaded", "", [&] { accounts->pluginLoaded(); }},
      {"pluginUnloaded", "", [&] { accounts->pluginUnloaded(); }},
      {"denyingRequestFromProcess:", "-8", [&] { agent->denyingRequestFromProcess(-8); }},
      {"preExpiredDonations:", "[]", [&] { agent->preExpiredDonations({}); }},
      {"contactsChangedNotificationFoundName:nameChanged:", "true,false",
       [&] { agent->contactsChangedNotificationFoundName(true, false); }},
      {"contactsChangedNotificationEmailAddressesChanged:", "true",
       [&] { agent->contactsChangedNotificationEmailAddressesChanged(true); }},
      {"didDiscoverExtension:", "\"x\"", [&] { agent->didDiscoverExtension("x"); }},
      {"couldNotRejectDonationIdentifier:error:", R"("d","domain 3: why")",
       [&] { agent->couldNotRejectDonationIdentifier("d", error); }},
      {"willRenewValues:withDonor:", bothText + ",\"donor\"",
       [&] {
         agent->willRenewValues({mail, image("secret", from("b", "i"))}, "donor");
       }},
      {"didRenewValue:untilDate:", mailText + R"(,"1970-01-02T00:00:00Z")",
       [&] { agent->didRenewValue(mail, Date(86400)); }},
      {"couldNotRenewBecauseDonorError:", "null",
       [&] { agent->couldNotRenewBecauseDonorError(nullptr); }},
      {"accountAdded:", '"' + accountText + '"', [&] { accounts->accountAdded(account); }},
  };
  for (const auto& [name, arguments, event] : rows) {
    event();
    const std::string line =
        '"' + name + '"' + (arguments.empty() ? "" : ",\"arguments\":[" + arguments + "]");
    EXPECT_EQ(takeLines(), std::vector{line});
  }
}

TEST_F(StructuredLogTest, SaysLessWhereALineWouldBeTooLong) {
  DonationValues values(64, email("secret@x", from("app", "e")));
  agent->acceptingDonations(values);
  EXPECT_TRUE(takeLines().front().starts_with(R"("acceptingDonations:","arguments":[[{"kind")"));
  values.push_back(image("secret"));
  agent->acceptingDonations(values);
  const std::string longText(5000, 'i');
  agent->willRenewValues({email("secret@x", from(longText, longText))}, "donor");
  agent->didRejectDonationIdentifier(longText + longText);
  agent->didRejectDonationIdentifier(longText);
  const std::string cut = std::string(256, 'i') + "…";
  EXPECT_EQ(takeLines(),
            (std::vector<std::string>{
                R"("acceptingDonations:","arguments":[{"emailAddress":64,"imageData":1}])",
                R"("willRenewValues:withDonor:","arguments":[{"emailAddress":1},"donor"])",
                R"("didRejectDonationIdentifier:","arguments":[")" + cut + "\"]",
                R"("didRejectDonationIdentifier:","arguments":[")" + longText + "\"]"}));
}

// In the place of syslog(3), with a daemon that takes no line before it goes on.
std::latch goesOn(1);
std::counting_semaphore<> taken(0);
std::promise<void> hasEnded;
std::string told;
int mask = LOG_UPTO(LOG_WARNING);

void write(int priority, const char* line) {
  goesOn.wait();
  told += std::to_string(priority) + " " + line + "\n";
  taken.release();
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
  goesOn.count_down();
  for (std::size_t line = 0; line < DetachedLineWriter::mostLinesWaiting; ++line) taken.acquire();
  other.write("end");
  hasEnded.get_future().wait();
  EXPECT_TRUE(told.starts_with("ovaro.quenlet\n5 analytics: 100%s %n\n5 other: \n")) << told;
  EXPECT_LE(std::count(told.begin(), told.end(), '\n'), 300) << "what is too much is dropped";
}

}  // namespace
}  // namespace quenlet
