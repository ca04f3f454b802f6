#include <fcntl.h>
#include <sys/epoll.h>

#include <cmath>
#include <csignal>
#include <latch>

#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/EventLoopScheduler.h"
#include "platform/scheduling/ProductionSchedulerProvider.h"
#include "platform/scheduling/RunLoop.h"
#include "platform/scheduling/TimerQueue.h"
#include "platform/scheduling/WorkerPool.h"
#include "tests/platform/ipc/RawPeer.h"
#include "tests/support/ThreadsRefused.h"

namespace quenlet {
namespace {

class ProductionSchedulerProviderTest : public testing::Test {
 protected:
  ~ProductionSchedulerProviderTest() override {
    loop.stop();
    loopThread.join();
  }

  EventLoop loop;
  std::thread loopThread{[this] { loop.run(); }};
  std::unique_ptr<ProductionSchedulerProvider> provider =
      std::make_unique<ProductionSchedulerProvider>(std::make_shared<EventLoopScheduler>(loop), 2);
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
  provider.reset();
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
  provider.reset();
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
  provider.reset();
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
  provider.reset();
  EXPECT_EQ(seen, 20);
}

TEST_F(ProductionSchedulerProviderTest, AWriterDoesNotWaitForTheBlockOfASynchronousReader) {
  std::vector<std::string> events;  // unguarded: each follows the one before
  std::latch written(1);
  background->performBlock([&] {
    state->performSynchronousReaderBlock([&] {
      state->performWriterBlock([&] {
        events.emplace_back("written");
        written.count_down();
      });
      events.emplace_back("read");
    });
    written.wait();  // on a thread of the pool that looks for no work meanwhile
    events.emplace_back("gone on");
  });
  provider.reset();
  EXPECT_EQ(events, std::vector<std::string>({"read", "written", "gone on"}));
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
  provider.reset();
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
  provider.reset();
  EXPECT_EQ(ran.size(), 101U);
  EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
}

TEST_F(ProductionSchedulerProviderTest, ABlockThatThrowsEndsAlone) {
  std::atomic<int> ran = 0;
  const auto fail = [] { throw std::bad_alloc(); };
  const auto note = [&] { ++ran; };
  testing::internal::CaptureStderr();
  for (int i = 0; i < 3; ++i) {
    background->performBlock(fail);
    serial->performBlock(fail);
    serial->performBlock(note);
    state->performReaderBlock(fail);
    state->performWriterBlock(fail);
    state->performWriterBlock(note);
    EXPECT_THROW(state->performSynchronousReaderBlock(fail), std::bad_alloc);
    static_cast<void>(serial->afterDelay(0, fail));
  }
  state->performSynchronousReaderBlock(note);
  provider.reset();
  EXPECT_EQ(ran, 7);
  const std::string report = testing::internal::GetCapturedStderr();
  EXPECT_NE(report.find("quenlet: a block has failed: std::bad_alloc\n"), std::string::npos);
}

TEST_F(ProductionSchedulerProviderTest, SchedulersDropWhatTheyAreGivenAfterTheEnd) {
  provider.reset();
  const auto owned = std::make_shared<int>(0);
  background->performBlock([owned] { ++*owned; });
  background->afterDelay(0, [owned] { ++*owned; })->cancel();
  EXPECT_EQ(owned.use_count(), 1);
  EXPECT_EQ(*owned, 0);
  state->performSynchronousReaderBlock([owned] { ++*owned; });
  EXPECT_EQ(*owned, 1);
}

TEST(WorkerPoolTest, StartsAThreadForEachBlockAtATimeAndPassesBlocksOnWhileItHasNone) {
  std::atomic<int> passedOn = 0;
  std::latch both(2), last(1);
  WorkerPool pool(2, [&](const Block&) { ++passedOn; });
  {
    const ThreadsRefused refused;
    pool.post([] { FAIL() << "on what thread?"; });
    EXPECT_EQ(passedOn, 1);
  }
  for (int i = 0; i < 2; ++i) pool.post([&] { both.arrive_and_wait(); });
  {
    const ThreadsRefused refused;
    pool.post([&] { last.count_down(); });
  }
  last.wait();
  EXPECT_EQ(passedOn, 1);
}

TEST(TimerQueueTest, BoundsDelaysThatTheClockCannotHold) {
  for (const double none : {-1.0, std::nan(""), -HUGE_VAL}) {
    EXPECT_EQ(TimerQueue::duration(none).count(), 0) << none;
  }
  EXPECT_EQ(TimerQueue::duration(2.5), std::chrono::milliseconds(2500));
  EXPECT_EQ(TimerQueue::duration(1e-12).count(), 1) << "a wait never ends early";
  EXPECT_GT(TimerQueue::duration(HUGE_VAL), std::chrono::hours(24 * 365 * 29));
}

class EventLoopTest : public testing::Test {
 protected:
  EventLoopTest() { std::tie(near, far) = connectedPair(); }
  // How often watches were called in so many turns of the loop.
  int callsIn(int turns) {
    calls = 0;
    for (int i = 0; i < turns; ++i) {
      loop.post([this] { loop.post([this] { loop.stop(); }); });
      loop.run();
    }
    return calls;
  }
  void send() { EXPECT_EQ(::write(far.get(), "x", 1), 1); }

  FileDescriptor near, far;
  EventLoop loop;
  int calls = 0;
};

TEST_F(EventLoopTest, RunsWhatWasPostedBeforeItStopsAndKeepsTheRest) {
  std::vector<int> ran;
  loop.post([&] {
    ran.push_back(1);
    loop.post([&] { ran.push_back(3); });
  });
  loop.stop();
  loop.post([&] { ran.push_back(2); });
  loop.run();
  EXPECT_EQ(ran, std::vector({1, 2}));
  EXPECT_EQ(callsIn(1), 0);
  EXPECT_EQ(ran, std::vector({1, 2, 3}));
}

TEST_F(EventLoopTest, ReportsReadinessUntilPausedAndAgainAfterwards) {
  const auto watch = loop.watch(near.get(), EPOLLIN, [&](std::uint32_t) { ++calls; });
  EXPECT_EQ(callsIn(1), 0);
  send();
  EXPECT_GE(callsIn(1), 1);
  watch->setEvents(0);
  far.reset();  // a hang-up, which epoll always reports
  EXPECT_EQ(callsIn(3), 0);
  watch->setEvents(EPOLLIN);
  EXPECT_GE(callsIn(1), 1);
  watch->cancel();
  std::uint32_t reported = 0;
  const auto another =
      loop.watch(near.get(), EPOLLIN, [&](std::uint32_t ready) { reported = ready; });
  EXPECT_EQ(callsIn(1), 0);
  EXPECT_NE(reported & EPOLLIN, 0U) << "the kernel has forgotten the first";
}

TEST_F(EventLoopTest, NeverCallsAHandlerCancelledInTheSameRound) {
  const FileDescriptor copy(::fcntl(near.get(), F_DUPFD_CLOEXEC, 0));
  std::vector<std::shared_ptr<EventLoop::Watch>> watches;
  for (const int descriptor : {near.get(), copy.get()}) {
    watches.push_back(loop.watch(descriptor, EPOLLIN, [&](std::uint32_t) {
      ++calls;
      for (const auto& watch : watches) watch->cancel();
    }));
  }
  send();
  EXPECT_EQ(callsIn(3), 1);
}

TEST_F(EventLoopTest, AHandlerOrBlockThatThrowsEndsAlone) {
  testing::internal::CaptureStderr();
  const auto watch = loop.watch(near.get(), EPOLLIN, [&](std::uint32_t) {
    if (++calls == 1) throw std::bad_alloc();
  });
  send();
  loop.post([] { throw std::runtime_error("no"); });
  EXPECT_GE(callsIn(3), 2);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "quenlet: a block has failed: no\nquenlet: a block has failed: std::bad_alloc\n");
}

TEST_F(EventLoopTest, DropsWhatIsLeftWhenItGoesAndOutlivingWatchesDoNothing) {
  const auto owned = std::make_shared<int>(0);
  std::shared_ptr<EventLoop::Watch> watch;
  {
    EventLoop brief;
    watch = brief.watch(near.get(), EPOLLIN, [owned](std::uint32_t) {});
    brief.post([owned] {});
  }
  EXPECT_EQ(owned.use_count(), 1);
  watch->setEvents(EPOLLOUT);
  watch->cancel();
}

// The loop blocks its signals in this thread, so that raise() leaves them pending for it.
class RunLoopTest : public testing::Test {
 protected:
  std::shared_ptr<Cancelable> note(int signal, const std::string& text) {
    return runLoop->addSignalSource(signal, [this, text] { events.push_back(text); });
  }

  std::unique_ptr<RunLoop> runLoop = std::make_unique<RunLoop>();
  std::vector<std::string> events;
};

TEST_F(RunLoopTest, KeepsAHangUpThatCameBeforeItsHandlerAndCallsNoCancelledOne) {
  ::raise(SIGHUP);
  std::shared_ptr<Cancelable> hangUp;
  const auto later = runLoop->mainThreadScheduler()->afterDelay(0.001, [&] {
    hangUp = note(SIGHUP, "hang-up");
    note(SIGHUP, "cancelled")->cancel();
    for (const int signal : {SIGHUP, SIGTERM}) ::raise(signal);
  });
  runLoop->run();
  EXPECT_EQ(events, std::vector<std::string>({"hang-up", "hang-up"}));
}

TEST_F(RunLoopTest, CallsNoCancelledHandlerForASignalThatCameBefore) {
  ::raise(SIGHUP);
  const auto later = runLoop->mainThreadScheduler()->afterDelay(0.001, [&] {
    note(SIGHUP, "hang-up")->cancel();
    ::raise(SIGTERM);
  });
  runLoop->run();
  EXPECT_EQ(events, std::vector<std::string>());
}

TEST_F(RunLoopTest, WaitsForWhatHoldsTerminationEvenOnOtherThreads) {
  const auto first = runLoop->holdTermination("one");
  const auto second = runLoop->holdTermination("one");
  std::thread holder;
  const auto interrupt = runLoop->addSignalSource(SIGINT, [&] {
    for (int i = 0; i < 2; ++i) first->cancel();  // counts once
    holder = std::thread([&] {
      runLoop->mainThreadScheduler()->performBlock([&] { events.emplace_back("still running"); });
      second->cancel();
    });
  });
  ::raise(SIGINT);
  runLoop->run();
  holder.join();
  EXPECT_EQ(events, std::vector<std::string>({"still running"}));
}

TEST_F(RunLoopTest, EndsFiveSecondsAfterTheFirstSignalWhateverHoldsIt) {
  std::vector<std::shared_ptr<Cancelable>> holds;
  for (const char* name : {"save", "request", "gone", "request"}) {
    holds.push_back(runLoop->holdTermination(name));
  }
  holds[2]->cancel();
  testing::internal::CaptureStderr();
  const auto begun = std::chrono::steady_clock::now();
  ::raise(SIGTERM);
  const auto again = runLoop->mainThreadScheduler()->afterDelay(2.0, [] { ::raise(SIGTERM); });
  runLoop->run();
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begun;
  EXPECT_TRUE(passed.count() >= 5.0 && passed.count() < 6.5) << passed.count();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "quenlet: ending, though still busy with: request (2), save\n");
}

// Without that a client that goes would end the agent.
TEST_F(RunLoopTest, OutlivesWritesThatNobodyReads) {
  auto [ours, theirs] = connectedPair();
  theirs.reset();
  EXPECT_EQ(::write(ours.get(), "x", 1), -1);
  EXPECT_EQ(errno, EPIPE);
}

}  // namespace
}  // namespace quenlet
