#include "tools/commands/StatsWord.h"

#include <gtest/gtest.h>

#include <sstream>

#include "platform/counters/CounterStore.h"

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
  EXPECT_EQ(out.str(), R"(Last attempt  1970-01-02T00:00:00Z
Own cards     3

Your own card has
  a name            yes
  e-mail addresses  no
  phone numbers     yes

Donated, on average of all reports
                    ALSO ON YOUR CARD  NEW  REPORTS
  e-mail addresses  1.5                2.5  2
  phone numbers     3.6                4.5  5
  postal addresses                     5.5  8

Other counters
  other  1.1 on average of 9
  zero   0.0 on average of 0
)");
  out.str("");
  StatsWord::writeJSON(out, {{}, {{"a", 4}, {"b", CounterDistribution{9, 9.5}}}});
  EXPECT_EQ(out.str(), R"({"counters":{"a":4,"b":{"count":9,"sum":9.5}}})"
                       "\n");
}

}  // namespace
}  // namespace quenlet
