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

TEST(StatsWordTest, ReadsTheUsersFilesAndAsksNoAgent) {
  const TemporaryDirectory home;
  ::setenv("HOME", home.path().c_str(), 1);
  std::filesystem::create_directories(home.path() / "Library/Preferences");
  std::filesystem::create_directories(home.path() / "Library/Logs/quenlet");
  RecordingAgent agent;
  std::ostringstream out, err;
  Session session{out, err, agent, Date(0)};
  EXPECT_EQ(CommandLine::run({"stats"}, session), ExitCode::done);
  std::ofstream(home.path() / "Library/Preferences/ovaro.quenlet.plist")
      << "<plist version=\"1.0\"><dict><key>last-metrics-attempt</key>"
         "<date>2026-05-01T12:00:00Z</date></dict></plist>";
  std::ofstream counters(home.path() / "Library/Logs/quenlet/counters.prom");
  counters << "# HELP new The counter new\n# TYPE new gauge\nnew -3\n" << std::flush;
  EXPECT_EQ(CommandLine::run({"stats", "--json"}, session), ExitCode::done);
  EXPECT_EQ(out.str(),
            "Last attempt  never\n"
            "{\"lastAttempt\":\"2026-05-01T12:00:00Z\",\"counters\":{\"new\":-3}}\n");
  counters << "\x1B[2J" << std::flush;
  EXPECT_EQ(CommandLine::run({"stats"}, session), ExitCode::refused);
  EXPECT_THAT(err.str(),
              testing::StartsWith("quenlet: ovaro.quenlet.counter-error 4: counters.prom: line 4"));
  std::filesystem::remove_all(home.path() / "Library/Logs");
  std::ofstream(home.path() / "Library/Preferences/ovaro.quenlet.plist") << "<plist>";
  EXPECT_EQ(CommandLine::run({"stats"}, session), ExitCode::refused);
  EXPECT_THAT(err.str(), testing::HasSubstr(": ovaro.quenlet.plist: "));
  EXPECT_EQ(agent.takeCalls(), "");
}

TEST(StatsWordTest, SaysInWordsWhatWasCounted) {
  const StatsWord::Stats stats{Date(0),
                               {{CounterKeys::meCardCount, 1},
                                {"new", -3},
                                {"newer", CounterDistribution{2, 3}},
                                {CounterKeys::hasName, 1},
                                {CounterKeys::hasPhoneNumber, 0},
                                {CounterKeys::matchedPhoneNumbers, CounterDistribution{3, 5}},
                                {CounterKeys::unmatchedPhoneNumbers, CounterDistribution{3, 0}},
                                {CounterKeys::matchedEmailAddresses, CounterDistribution{1, 1}}}};
  std::ostringstream out;
  StatsWord::writeText(out, stats);
  EXPECT_EQ(out.str(),
            "Last attempt  1970-01-01T00:00:00Z\n"
            "Own cards     1\n"
            "\nYour own card has\n"
            "  a name         yes\n"
            "  phone numbers  no\n"
            "\nDonated, on average of all reports\n"
            "                    ALSO ON YOUR CARD  NEW  REPORTS\n"
            "  e-mail addresses  1.0                     1\n"
            "  phone numbers     1.7                0.0  3\n"
            "\nOther counters\n"
            "  new    -3\n"
            "  newer  1.5 on average of 2\n");
}

}  // namespace
}  // namespace quenlet
