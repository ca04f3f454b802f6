#include "platform/notifications/MeCardFileWatch.h"

#include <gtest/gtest.h>

#include <fstream>

#include "platform/notifications/SocketNotificationCenter.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

TEST(MeCardFileWatchTest, PostsForChangesOfTheCardAlone) {
  const TemporaryDirectory home;
  EventLoop loop;
  const auto center =
      std::make_shared<SocketNotificationCenter>(loop, home.path() / "quenlet/notifications");
  int posts = 0;
  const auto observer = center->addObserver(MeCardChangeDistributedNotification, [&] { ++posts; });
  const auto end = center->addObserver("end", [&] { loop.stop(); });
  auto watch = std::make_unique<MeCardFileWatch>(loop, home.path() / "me.vcf", center);
  const auto postsAfterWriting = [&](const char* name) {
    posts = 0;
    std::ofstream(home.path() / name) << "card";
    loop.post([&] { loop.post([&] { center->post("end"); }); });
    loop.run();
    return posts;
  };
  EXPECT_GE(postsAfterWriting("me.vcf"), 1);
  EXPECT_EQ(postsAfterWriting("me.vcf~"), 0);
  watch.reset();
  EXPECT_EQ(postsAfterWriting("me.vcf"), 0) << "no longer watched";
}

}  // namespace
}  // namespace quenlet
