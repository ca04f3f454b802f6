#include "platform/scheduling/RunLoop.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <thread>
#include <vector>

namespace quenlet {
namespace {

using Events = std::vector<std::string>;

// The loop blocks its signals in this thread, so that raise() leaves them pending for it.
class RunLoopTest : public testing::Test {
 protected:
  std::shared_ptr<Cancelable> note(int signal, const std::string& text) {
    return runLoop->addSignalSource(signal, [this, text] { events.push_back(text); });
  }
  void perform(Block block) { runLoop->mainThreadScheduler()->performBlock(std::move(block)); }

  std::unique_ptr<RunLoop> runLoop = std::make_unique<RunLoop>();
  Events events;
};

TEST_F(RunLoopTest, HangUpsRunTheirHandlersAndTerminationEndsTheRun) {
  const auto hangUp = note(SIGHUP, "hang-up");
  const auto cancelled = note(SIGHUP, "cancelled");
  const auto terminate = note(SIGTERM, "terminate");
  cancelled->cancel();
  perform([] { ::raise(SIGHUP); });
  const auto later = runLoop->mainThreadScheduler()->afterDelay(0.001, [&] {
    events.emplace_back("delayed");
    ::raise(SIGTERM);
  });
  runLoop->run();
  EXPECT_EQ(events, Events({"hang-up", "delayed", "terminate"}));
}

TEST_F(RunLoopTest, KeepsAHangUpThatCameBeforeItsHandler) {
  ::raise(SIGHUP);
  std::shared_ptr<Cancelable> hangUp;
  const auto later = runLoop->mainThreadScheduler()->afterDelay(0.001, [&] {
    hangUp = note(SIGHUP, "hang-up");
    perform([&] { runLoop->stop(); });
  });
  runLoop->run();
  EXPECT_EQ(events, Events({"hang-up"}));
}

TEST_F(RunLoopTest, WaitsForWhatHoldsTerminationEvenOnOtherThreads) {
  const auto first = runLoop->holdTermination();
  const auto second = runLoop->holdTermination();
  std::thread holder;
  const auto interrupt = runLoop->addSignalSource(SIGINT, [&] {
    for (int i = 0; i < 2; ++i) first->cancel();  // counts once
    holder = std::thread([&] {
      perform([&] { events.emplace_back("still running"); });
      second->cancel();
    });
  });
  ::raise(SIGINT);
  runLoop->run();
  holder.join();
  EXPECT_EQ(events, Events({"still running"}));
}

TEST_F(RunLoopTest, StopsWhateverHoldsItAndHoldsMayOutliveIt) {
  const auto hold = runLoop->holdTermination();
  const auto terminate = note(SIGTERM, "terminate");
  ::raise(SIGTERM);
  perform([&] { runLoop->stop(); });
  runLoop->run();
  runLoop.reset();
  hold->cancel();
  EXPECT_EQ(events, Events({"terminate"}));
}

}  // namespace
}  // namespace quenlet
