#include "platform/scheduling/RunLoop.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <thread>
#include <vector>

namespace quenlet {
namespace {

// The loop blocks its signals in this thread, so that raise() leaves them pending for it.
class RunLoopTest : public testing::Test {
 protected:
  std::shared_ptr<Cancelable> note(int signal, const std::string& text) {
    return runLoop.addSignalSource(signal, [this, text] { events.push_back(text); });
  }

  RunLoop runLoop;
  std::vector<std::string> events;
};

TEST_F(RunLoopTest, HangUpsRunTheirHandlersAndTerminationEndsTheRun) {
  const auto hangUp = note(SIGHUP, "hang-up");
  const auto cancelled = note(SIGHUP, "cancelled");
  const auto terminate = note(SIGTERM, "terminate");
  cancelled->cancel();
  runLoop.mainThreadScheduler()->performBlock([] { ::raise(SIGHUP); });
  const auto later = runLoop.mainThreadScheduler()->afterDelay(0.001, [&] {
    events.emplace_back("delayed");
    ::raise(SIGTERM);
  });
  runLoop.run();
  EXPECT_EQ(events, std::vector<std::string>({"hang-up", "delayed", "terminate"}));
}

TEST_F(RunLoopTest, KeepsAHangUpThatCameBeforeItsHandler) {
  ::raise(SIGHUP);
  std::shared_ptr<Cancelable> hangUp;
  const auto later = runLoop.mainThreadScheduler()->afterDelay(0.001, [&] {
    hangUp = note(SIGHUP, "hang-up");
    runLoop.mainThreadScheduler()->performBlock([&] { runLoop.stop(); });
  });
  runLoop.run();
  EXPECT_EQ(events, std::vector<std::string>({"hang-up"}));
}

TEST_F(RunLoopTest, WaitsForWhatHoldsTermination) {
  const auto first = runLoop.holdTermination();
  const auto second = runLoop.holdTermination();
  std::thread holder;
  const auto interrupt = runLoop.addSignalSource(SIGINT, [&] {
    first->cancel();
    first->cancel();  // counts once
    holder = std::thread([&] {
      runLoop.mainThreadScheduler()->performBlock([&] { events.emplace_back("still running"); });
      second->cancel();
    });
  });
  ::raise(SIGINT);
  runLoop.run();
  holder.join();
  EXPECT_EQ(events, std::vector<std::string>({"still running"}));
}

TEST_F(RunLoopTest, HoldsMayBeReleasedAfterTheLoopIsGone) {
  std::shared_ptr<Cancelable> hold;
  {
    RunLoop brief;
    hold = brief.holdTermination();
    const auto source = brief.addSignalSource(SIGTERM, [&] { events.emplace_back("terminate"); });
    ::raise(SIGTERM);
    brief.mainThreadScheduler()->performBlock([&] { brief.stop(); });
    brief.run();
  }
  hold->cancel();
  EXPECT_EQ(events, std::vector<std::string>({"terminate"}));
}

}  // namespace
}  // namespace quenlet
