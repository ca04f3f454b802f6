#include "platform/notifications/MeCardFileWatch.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>

#include "platform/notifications/SocketNotificationCenter.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

TEST(MeCardFileWatchTest, PostsForEachKindOfChangeOfTheCardAndForNothingElse) {
  const TemporaryDirectory temporary;
  const auto directory = temporary.path() / "Contacts";
  const auto card = directory / "me.vcf";
  EventLoop loop;
  const auto center =
      std::make_shared<SocketNotificationCenter>(loop, temporary.path() / "quenlet/notifications");
  int posts = 0;
  const auto observer = center->addObserver(MeCardChangeDistributedNotification, [&] { ++posts; });
  const auto end = center->addObserver("end", [&] { loop.stop(); });
  const auto postsAfter = [&](const std::function<void()>& change) {
    posts = 0;
    change();
    loop.post([&] { loop.post([&] { center->post("end"); }); });
    loop.run();
    return posts;
  };
  const auto write = [](const std::filesystem::path& file) { std::ofstream(file) << "card"; };

  auto watch = std::make_unique<MeCardFileWatch>(loop, card, center);
  EXPECT_GE(postsAfter([&] { write(card); }), 1) << "created";
  EXPECT_GE(postsAfter([&] { write(card); }), 1) << "written in place";
  EXPECT_EQ(postsAfter([&] { write(directory / "me.vcf~"); }), 0) << "another file";
  EXPECT_GE(postsAfter([&] { std::filesystem::rename(directory / "me.vcf~", card); }), 1);
  EXPECT_GE(postsAfter([&] { std::filesystem::remove(card); }), 1) << "deleted";
  watch.reset();
  EXPECT_EQ(postsAfter([&] { write(card); }), 0) << "no longer watched";
}

}  // namespace
}  // namespace quenlet
