#include "platform/scheduling/EventLoop.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <thread>
#include <vector>

#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {
namespace {

class EventLoopTest : public testing::Test {
 protected:
  EventLoopTest() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    near.reset(ends[0]);
    far.reset(ends[1]);
  }
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

TEST_F(EventLoopTest, RunsBlocksPostedBeforeTheStopInOrderAndKeepsLaterOnes) {
  std::vector<int> ran;
  std::thread poster([&] {
    for (int i = 0; i < 1000; ++i) loop.post([&, i] { ran.push_back(i); });
    loop.stop();
  });
  loop.run();
  poster.join();
  ASSERT_EQ(ran.size(), 1000U);
  EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
  loop.stop();
  loop.post([&] { ran.clear(); });
  loop.run();
  EXPECT_TRUE(ran.empty());
}

TEST_F(EventLoopTest, ReportsReadinessUntilPausedAndAgainAfterwards) {
  const auto watch = loop.watch(near.get(), EPOLLIN, [&](std::uint32_t) { ++calls; });
  EXPECT_EQ(callsIn(1), 0);
  send();
  EXPECT_GE(callsIn(1), 1);
  watch->setEvents(0);
  far.reset();  // a hang-up, which epoll reports to whoever is registered at all
  EXPECT_EQ(callsIn(3), 0);
  watch->setEvents(EPOLLIN);
  EXPECT_GE(callsIn(1), 1);
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

TEST_F(EventLoopTest, ReportsADescriptorThatCannotBeWatchedAsAnError) {
  const FileDescriptor directory(::open("/", O_RDONLY | O_CLOEXEC));
  const auto watch = loop.watch(directory.get(), EPOLLIN, [&](std::uint32_t ready) {
    ++calls;
    EXPECT_EQ(ready, static_cast<std::uint32_t>(EPOLLERR));
  });
  EXPECT_EQ(callsIn(2), 1);
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

}  // namespace
}  // namespace quenlet
