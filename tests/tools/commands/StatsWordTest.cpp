#include "tools/commands/StatsWord.h"

#include <gtest/gtest.h>

#include "tests/support/GoldenFile.h"

namespace quenlet {
namespace {

TEST(StatsWordTest, TellsEachCounterInItsColumn) {
  using namespace CounterKeys;
  const StatsWord::Stats stats{Date(86400),
                               {{meCardCount, 3},
                                {hasName, 1},
                                {hasEmailAddress, 0},
                                {hasPhoneNumber, 2},
                                {matchedEmailAddresses, CounterDistribution{2, 3}},
                                {unmatchedEmailAddresses, CounterDistribution{4, 10}},
                                {matchedPhoneNumbers, CounterDistribution{5, 18}},
                                {unmatchedPhoneNumbers, CounterDistribution{6, 27}},
                                {unmatchedPostalAddresses, CounterDistribution{8, 44}},
                                {"other", CounterDistribution{9, 9.9}},
                                {"zero", CounterDistribution{}}}};
  std::ostringstream out;
  StatsWord::writeText(out, {}, stats);
  EXPECT_EQ(out.str(), goldenFile("tests/tools/commands/stats.txt"));
  out.str("");
  StatsWord::writeJSON(out, {{}, {{"a", 4}, {"b", CounterDistribution{9, 9.5}}}});
  EXPECT_EQ(out.str(), R"({"counters":{"a":4,"b":{"count":9,"sum":9.5}}})"
                       "\n");
}

}  // namespace
}  // namespace quenlet
