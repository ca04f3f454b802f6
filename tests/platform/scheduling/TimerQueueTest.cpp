#include "platform/scheduling/TimerQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace quenlet {
namespace {

using std::chrono::nanoseconds;

TEST(TimerQueueTest, GivesBlocksByDeadlineThenBySubmissionAndForgetsRemovedOnes) {
  TimerQueue queue;
  std::mt19937 random(1);
  std::vector<std::pair<int, int>> expected, given;
  for (int i = 0; i < 3000; ++i) {
    const int due = static_cast<int>(random() % 100);
    const auto key = queue.add(TimerQueue::Instant(nanoseconds(due)),
                               [&given, due, i] { given.emplace_back(due, i); });
    if (i % 3 == 0) {
      EXPECT_TRUE(queue.remove(key));
      EXPECT_FALSE(queue.remove(key));
    } else {
      expected.emplace_back(due, i);
    }
  }
  std::sort(expected.begin(), expected.end());
  for (int now = 0; now < 100; ++now) {
    while (const Block block = queue.takeDue(TimerQueue::Instant(nanoseconds(now)))) block();
    EXPECT_TRUE(given.empty() || given.back().first <= now);
  }
  EXPECT_EQ(given, expected);
  EXPECT_EQ(queue.earliest(), std::nullopt);
}

TEST(TimerQueueTest, BoundsDelaysThatTheClockCannotHold) {
  for (const double none : {-1.0, std::nan(""), -HUGE_VAL}) {
    EXPECT_EQ(TimerQueue::duration(none).count(), 0) << none;
  }
  EXPECT_EQ(TimerQueue::duration(2.5), std::chrono::milliseconds(2500));
  EXPECT_EQ(TimerQueue::duration(1e-12).count(), 1) << "a wait never ends early";
  EXPECT_GT(TimerQueue::duration(HUGE_VAL), std::chrono::hours(24 * 365 * 29));
}

}  // namespace
}  // namespace quenlet
