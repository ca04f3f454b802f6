#include "bus/BusLoop.h"

#include <gmock/gmock.h>

#include "tests/platform/ipc/RawPeer.h"

namespace quenlet {
namespace {

TEST(BusLoopTest, CallsLaterWhatIsToComeAfterMessagesAndEndsWhenItIsStopped) {
  const auto ends = connectedPair();
  std::vector<std::string> called;
  BusLoop loop;
  const auto take = [&](const FileDescriptor& end, const char* name) {
    return [&, name] {
      char byte = 0;
      EXPECT_EQ(::recv(end.get(), &byte, 1, 0), 1);
      called.emplace_back(name);
      if (called.size() == 2) loop.stop();
    };
  };
  for (const FileDescriptor* end : {&ends.first, &ends.second}) {
    ASSERT_EQ(::send(end->get(), "x", 1, 0), 1);
  }
  const auto late =
      loop.watch(ends.first.get(), take(ends.first, "late"), BusLoop::Turn::afterMessages);
  const auto early = loop.watch(ends.second.get(), take(ends.second, "early"));
  EXPECT_EQ(loop.run(), nullptr);
  EXPECT_THAT(called, testing::ElementsAre("early", "late"));
}

}  // namespace
}  // namespace quenlet
