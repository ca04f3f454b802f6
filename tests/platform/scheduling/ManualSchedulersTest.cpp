#include "tests/support/ManualSchedulers.h"

#include <gtest/gtest.h>

#include <vector>

namespace quenlet {
namespace {

// The unit tests of everything else lean on these schedulers, hence a test of their own.
class ManualSchedulersTest : public testing::Test {
 protected:
  Block note(int number) {
    return [this, number] { ran.push_back(number); };
  }

  ManualSchedulerProvider schedulers;
  std::vector<int> ran;
};

TEST_F(ManualSchedulersTest, RunsBlocksOfAllSchedulersInSubmissionOrderOnlyWhenTold) {
  const auto serial = schedulers.newSerialSchedulerWithName("a");
  serial->performBlock([&] { serial->performBlock(note(4)); });
  schedulers.backgroundScheduler()->performBlock(note(2));
  const auto state = schedulers.newReaderWriterSchedulerWithName("b");
  state->performWriterBlock(note(99))->cancel();
  state->performWriterBlock(note(3));
  schedulers.immediateScheduler()->performBlock(note(1));
  EXPECT_EQ(ran, std::vector<int>({1}));
  schedulers.runUntilIdle();
  EXPECT_EQ(ran, std::vector<int>({1, 2, 3, 4}));
}

TEST_F(ManualSchedulersTest, FiresDelayedBlocksAtTheirInstantInDeadlineOrder) {
  const auto background = schedulers.backgroundScheduler();
  const Date start = schedulers.now();
  std::vector<double> instants;
  const auto noteInstant = [&] { instants.push_back(schedulers.now().timeIntervalSince(start)); };
  const auto late = background->afterDelay(5.0, noteInstant);
  const auto nested = background->afterDelay(2.0, [&] {
    noteInstant();
    static_cast<void>(background->afterDelay(1.0, noteInstant));
  });
  const auto called = background->afterDelay(3.0, noteInstant);
  called->cancel();
  schedulers.advance(1.5);
  EXPECT_TRUE(instants.empty());
  schedulers.advance(3.5);
  EXPECT_EQ(instants, std::vector<double>({2.0, 3.0, 5.0}));
}

TEST_F(ManualSchedulersTest, SynchronousReaderSeesOnlyItsOwnSchedulersEarlierBlocks) {
  const auto state = schedulers.newReaderWriterSchedulerWithName("state");
  schedulers.backgroundScheduler()->performBlock(note(4));
  state->performWriterBlock([&] {
    ran.push_back(1);
    state->performWriterBlock(note(5));
  });
  state->performReaderBlock(note(2));
  state->performSynchronousReaderBlock(note(3));
  EXPECT_EQ(ran, std::vector<int>({1, 2, 3}));
  schedulers.runUntilIdle();
  EXPECT_EQ(ran, std::vector<int>({1, 2, 3, 4, 5}));
}

}  // namespace
}  // namespace quenlet
