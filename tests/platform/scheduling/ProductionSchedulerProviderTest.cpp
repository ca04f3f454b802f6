#include "platform/scheduling/ProductionSchedulerProvider.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <latch>
#include <thread>
#include <vector>

namespace quenlet {
namespace {

class ProductionSchedulerProviderTest : public testing::Test {
 protected:
  // Ends the provider, which runs everything that was submitted.
  void finish() { provider.reset(); }

  std::unique_ptr<ProductionSchedulerProvider> provider =
      std::make_unique<ProductionSchedulerProvider>(nullptr, 2);
  std::shared_ptr<Scheduler> background = provider->backgroundScheduler();
  std::shared_ptr<Scheduler> serial = provider->newSerialSchedulerWithName("serial");
  std::shared_ptr<Scheduler> other = provider->newSerialSchedulerWithName("other");
  std::shared_ptr<ReaderWriterScheduler> state =
      provider->newReaderWriterSchedulerWithName("state");
};

TEST_F(ProductionSchedulerProviderTest, SerialSchedulersRunBlocksOneByOneInOrder) {
  std::vector<int> ran[2];  // unguarded: the sanitizer sees blocks that run together
  for (int i = 0; i < 2000; ++i) {
    serial->performBlock([&, i] { ran[0].push_back(i); });
    other->performBlock([&, i] { ran[1].push_back(i); });
  }
  serial->performBlock([&, last = serial] { last->performBlock([&] { ran[0].push_back(2000); }); });
  serial.reset();
  finish();
  EXPECT_EQ(ran[0].size(), 2001U);
  EXPECT_EQ(ran[1].size(), 2000U);
  for (const auto& each : ran) EXPECT_TRUE(std::is_sorted(each.begin(), each.end()));
}

TEST_F(ProductionSchedulerProviderTest, ReadersSeeAllEarlierWritersAndNoLaterOne) {
  int written = 0;  // unguarded on purpose
  std::atomic<int> wrong = 0, readersInside = 0;
  const auto read = [&](int expected) {
    ++readersInside;
    if (written != expected) ++wrong;
    --readersInside;
  };
  for (int i = 1; i <= 1000; ++i) {
    state->performWriterBlock([&] {
      if (readersInside != 0) ++wrong;
      ++written;
    });
    for (int j = 0; j < i % 4; ++j) state->performReaderBlock([&read, i] { read(i); });
    if (i % 5 == 0) state->performSynchronousReaderBlock([&read, i] { read(i); });
  }
  finish();
  EXPECT_EQ(written, 1000);
  EXPECT_EQ(wrong, 0);
}

TEST_F(ProductionSchedulerProviderTest, ReadersRunTogetherAndAWriterWaitsForThem) {
  std::latch together(3);
  std::atomic<int> read = 0;
  int readBeforeWriter = 0;
  const auto reader = [&] {
    together.arrive_and_wait();  // ends only when all three are inside
    ++read;
  };
  for (int i = 0; i < 2; ++i) state->performReaderBlock(reader);
  state->performSynchronousReaderBlock([&] {
    state->performWriterBlock([&] { readBeforeWriter = read; });
    reader();
  });
  finish();
  EXPECT_EQ(readBeforeWriter, 3);
}

TEST_F(ProductionSchedulerProviderTest, SynchronousReadersGetThroughWhenTheyFillThePool) {
  std::latch full(2), submitted(1);
  std::atomic<int> seen = 0;
  int written = 0;
  for (int i = 0; i < 2; ++i) {
    background->performBlock([&] {
      full.count_down();
      submitted.wait();
      state->performSynchronousReaderBlock([&] { seen += written; });
    });
  }
  full.wait();
  for (int i = 0; i < 10; ++i) state->performWriterBlock([&] { ++written; });
  submitted.count_down();
  finish();
  EXPECT_EQ(seen, 20);
}

TEST_F(ProductionSchedulerProviderTest, CancelledBlocksNeverStart) {
  std::latch gate(1);
  std::vector<std::string> ran;
  const auto note = [&](const char* name) { return [&ran, name] { ran.emplace_back(name); }; };
  state->performWriterBlock([&] { gate.wait(); });
  serial->performBlock([&] { gate.wait(); });
  const auto writer = state->performWriterBlock(note("writer"));
  const auto reader = state->performReaderBlock(note("reader"));
  const auto kept = state->performWriterBlock(note("kept"));
  // Whether it still waits for its timer or already for the serial scheduler.
  const auto delayed = serial->afterDelay(0, note("delayed"));
  for (const auto& token : {writer, reader, delayed}) token->cancel();
  gate.count_down();
  state->performSynchronousReaderBlock([&] { kept->cancel(); });  // too late
  finish();
  EXPECT_EQ(ran, std::vector<std::string>({"kept"}));
}

TEST_F(ProductionSchedulerProviderTest, DelayedBlocksComeOnTheirSchedulerInDeadlineOrder) {
  std::vector<int> ran;
  std::latch last(1);
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i <= 200; ++i) {
    const auto token = serial->afterDelay(0.005 + i / 50 * 0.001, [&, i] {
      ran.push_back(i);
      if (i == 200) last.count_down();
    });
    if (i % 2 != 0) token->cancel();
  }
  static_cast<void>(serial->afterDelay(3600, [&] { ran.push_back(-1); }));
  last.wait();
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(9));
  finish();
  EXPECT_EQ(ran.size(), 101U);
  EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
}

TEST_F(ProductionSchedulerProviderTest, SchedulersDropWhatTheyAreGivenAfterTheEnd) {
  finish();
  const auto owned = std::make_shared<int>(0);
  background->performBlock([owned] { ++*owned; });
  background->afterDelay(0, [owned] { ++*owned; })->cancel();
  EXPECT_EQ(owned.use_count(), 1);
  EXPECT_EQ(*owned, 0);
  state->performSynchronousReaderBlock([owned] { ++*owned; });
  EXPECT_EQ(*owned, 1);
}

}  // namespace
}  // namespace quenlet
