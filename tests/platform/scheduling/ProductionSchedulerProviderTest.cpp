#include "platform/scheduling/ProductionSchedulerProvider.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <latch>
#include <thread>
#include <vector>

#include "platform/scheduling/EventLoopScheduler.h"

namespace quenlet {
namespace {

class ProductionSchedulerProviderTest : public testing::Test {
 protected:
  // Ends the provider, which runs everything that was submitted.
  void finish() { provider.reset(); }

  EventLoop mainLoop;
  std::shared_ptr<Scheduler> mainThread = std::make_shared<EventLoopScheduler>(mainLoop);
  std::unique_ptr<ProductionSchedulerProvider> provider =
      std::make_unique<ProductionSchedulerProvider>(mainThread, 2);
};

TEST_F(ProductionSchedulerProviderTest, SerialSchedulersRunBlocksOneByOneInOrder) {
  std::vector<int> first, second;  // unguarded: the sanitizer sees blocks that run together
  {
    const auto a = provider->newSerialSchedulerWithName("a");
    const auto b = provider->newSerialSchedulerWithName("b");
    for (int i = 0; i < 2000; ++i) {
      a->performBlock([&, i] { first.push_back(i); });
      b->performBlock([&, i] { second.push_back(i); });
    }
    a->performBlock([&first, a] { a->performBlock([&] { first.push_back(2000); }); });
  }
  finish();
  EXPECT_EQ(first.size(), 2001U);
  EXPECT_EQ(second.size(), 2000U);
  EXPECT_TRUE(std::is_sorted(first.begin(), first.end()));
  EXPECT_TRUE(std::is_sorted(second.begin(), second.end()));
}

TEST_F(ProductionSchedulerProviderTest, ReadersSeeAllEarlierWritersAndNoLaterOne) {
  const auto state = provider->newReaderWriterSchedulerWithName("state");
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
  const auto state = provider->newReaderWriterSchedulerWithName("state");
  std::latch together(3);
  std::atomic<int> read = 0;
  int readBeforeWriter = 0;
  const auto reader = [&] {
    together.arrive_and_wait();  // ends only when all three are inside
    ++read;
  };
  state->performReaderBlock(reader);
  state->performReaderBlock(reader);
  state->performSynchronousReaderBlock([&] {
    state->performWriterBlock([&] { readBeforeWriter = read; });
    reader();
  });
  finish();
  EXPECT_EQ(readBeforeWriter, 3);
}

TEST_F(ProductionSchedulerProviderTest, SynchronousReadersGetThroughWhenTheyFillThePool) {
  const auto state = provider->newReaderWriterSchedulerWithName("state");
  const auto background = provider->backgroundScheduler();
  std::latch full(2), done(2);
  std::atomic<int> seen = 0;
  int written = 0;
  std::promise<void> submitted;
  auto allSubmitted = submitted.get_future().share();
  for (int i = 0; i < 2; ++i) {
    background->performBlock([&] {
      full.count_down();
      allSubmitted.wait();
      state->performSynchronousReaderBlock([&] { seen += written; });
      done.count_down();
    });
  }
  full.wait();
  for (int i = 0; i < 10; ++i) state->performWriterBlock([&] { ++written; });
  submitted.set_value();
  done.wait();
  EXPECT_EQ(seen, 20);
}

TEST_F(ProductionSchedulerProviderTest, CancelledBlocksNeverStart) {
  const auto state = provider->newReaderWriterSchedulerWithName("state");
  const auto serial = provider->newSerialSchedulerWithName("serial");
  std::promise<void> gate;
  const auto wait = [opened = gate.get_future().share()] { opened.wait(); };
  std::vector<std::string> ran;
  state->performWriterBlock(wait);
  serial->performBlock(wait);
  const auto writer = state->performWriterBlock([&] { ran.emplace_back("writer"); });
  const auto reader = state->performReaderBlock([&] { ran.emplace_back("reader"); });
  const auto kept = state->performWriterBlock([&] { ran.emplace_back("kept"); });
  // Whether it still waits for its timer or already for the serial scheduler.
  const auto delayed = serial->afterDelay(0, [&] { ran.emplace_back("delayed"); });
  for (const auto& token : {writer, reader, delayed}) token->cancel();
  gate.set_value();
  state->performSynchronousReaderBlock([&] { kept->cancel(); });  // too late
  finish();
  EXPECT_EQ(ran, std::vector<std::string>({"kept"}));
}

TEST_F(ProductionSchedulerProviderTest, DelayedBlocksComeOnTheirSchedulerInDeadlineOrder) {
  const auto serial = provider->newSerialSchedulerWithName("serial");
  std::vector<int> ran;
  std::vector<std::shared_ptr<Cancelable>> tokens;
  std::promise<void> last;
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i <= 200; ++i) {
    tokens.push_back(serial->afterDelay(0.005 + i / 50 * 0.001, [&, i] {
      ran.push_back(i);
      if (i == 200) last.set_value();
    }));
    if (i % 2 != 0) tokens.back()->cancel();
  }
  tokens.push_back(serial->afterDelay(3600, [&] { ran.push_back(-1); }));
  last.get_future().wait();
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(9));
  finish();
  EXPECT_EQ(ran.size(), 101U);
  EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
}

TEST_F(ProductionSchedulerProviderTest, ChoosesTheThreadThatEachKindPromises) {
  std::thread::id immediate, later, background;
  std::latch ran(2);
  const auto note = [](std::thread::id& where) { where = std::this_thread::get_id(); };
  provider->immediateScheduler()->performBlock([&] { note(immediate); });
  EXPECT_EQ(immediate, std::this_thread::get_id());
  const auto token = provider->immediateScheduler()->afterDelay(0, [&] {
    note(later);
    ran.count_down();
  });
  provider->backgroundScheduler()->performBlock([&] {
    note(background);
    ran.count_down();
  });
  ran.wait();
  EXPECT_NE(later, immediate);
  EXPECT_NE(background, immediate);
  std::vector<std::thread::id> main(2);
  const auto delayed = provider->mainThreadScheduler()->afterDelay(0.001, [&] {
    note(main[1]);
    mainLoop.stop();
  });
  provider->mainThreadScheduler()->performBlock([&] { note(main[0]); });
  std::thread loopThread([&] { mainLoop.run(); });
  const std::thread::id expected = loopThread.get_id();
  loopThread.join();
  EXPECT_EQ(main, std::vector<std::thread::id>(2, expected));
}

TEST_F(ProductionSchedulerProviderTest, SchedulersDropWhatTheyAreGivenAfterTheEnd) {
  const auto background = provider->backgroundScheduler();
  const auto state = provider->newReaderWriterSchedulerWithName("state");
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
