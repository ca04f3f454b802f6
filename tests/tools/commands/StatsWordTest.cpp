#include "tools/commands/StatsWord.h"

#include <gmock/gmock.h>
#include <stdlib.h>

#include <sstream>

#include "platform/counters/CounterKeys.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/TemporaryDirectory.h"
#include "tools/commands/CommandLine.h"

namespace quenlet {
namespace {

class StatsWordTest : public testing::Test {
 protected:
  StatsWordTest() { ::setenv("HOME", home.path().c_str(), 1); }

  int run(const std::vector<std::string>& words) {
    out.str("");
    err.str("");
    Session session{out, err, agent, Date(0)};
    return static_cast<int>(CommandLine::run(words, session));
  }
  void write(const std::string& file, const std::string& content) const {
    const auto path = home.path() / "Library" / file;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << content;
  }

  TemporaryDirectory home;
  RecordingAgent agent;
  std::ostringstream out;
  std::ostringstream err;
};

TEST_F(StatsWordTest, ReadsTheUsersFilesAndAsksNoAgent) {
  EXPECT_EQ(run({"stats"}), 0);
  EXPECT_EQ(out.str(), "Last attempt  never\n");
  EXPECT_EQ(run({"stats", "--json"}), 0);
  EXPECT_EQ(out.str(), "{\"counters\":{}}\n");

  write("Preferences/ovaro.quenlet.plist",
        "<plist version=\"1.0\"><dict><key>last-metrics-attempt</key>"
        "<date>2026-05-01T12:00:00Z</date></dict></plist>");
  const std::string scalar = "# HELP new The counter new\n# TYPE new gauge\nnew -3\n";
  write("Logs/quenlet/counters.prom", scalar);
  EXPECT_EQ(run({"stats", "--json"}), 0);
  EXPECT_EQ(out.str(), "{\"lastAttempt\":\"2026-05-01T12:00:00Z\",\"counters\":{\"new\":-3}}\n");

  write("Logs/quenlet/counters.prom", scalar + "\x1B[2J");
  EXPECT_EQ(run({"stats"}), 1);
  EXPECT_THAT(err.str(), testing::StartsWith("quenlet: ovaro.quenlet.counter-error 4: "));
  EXPECT_EQ(agent.takeCalls(), "");
}

TEST_F(StatsWordTest, SaysInWordsWhatWasCounted) {
  const StatsWord::Stats stats{Date(0),
                               {{CounterKeys::meCardCount, 1},
                                {CounterKeys::hasName, 1},
                                {CounterKeys::hasPhoneNumber, 0},
                                {CounterKeys::matchedPhoneNumbers, CounterDistribution{3, 5}},
                                {CounterKeys::unmatchedPhoneNumbers, CounterDistribution{3, 0}},
                                {CounterKeys::matchedEmailAddresses, CounterDistribution{1, 1}}}};
  StatsWord::writeText(out, stats);
  EXPECT_EQ(out.str(),
            "Last attempt  1970-01-01T00:00:00Z\n"
            "\nYour own card has\n"
            "  a name         yes\n"
            "  phone numbers  no\n"
            "\nDonated, on average of all reports\n"
            "                 ALSO ON YOUR CARD  NEW  REPORTS\n"
            "  phone numbers  1.7                0.0  3\n");
}

}  // namespace
}  // namespace quenlet
