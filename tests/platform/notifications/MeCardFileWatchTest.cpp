#include "platform/notifications/MeCardFileWatch.h"

#include "tests/support/FakeServices.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

// How a directory's changes are seen is DirectoryWatch's; which of them are the card's is this.
TEST(MeCardFileWatchTest, PostsEachChangeOfTheCardAndOfNothingElse) {
  const TemporaryDirectory home;
  EventLoop loop;
  Trace trace;
  const auto center = std::make_shared<FakeNotificationCenter>(trace);
  auto watch = std::make_unique<MeCardFileWatch>(loop, home / "Contacts/me.vcf", center);
  const std::tuple<const char*, bool, std::function<void()>> rows[] = {
      {"another file", false, [&] { home.write("Contacts/you.vcf", "1"); }},
      {"written", true, [&] { home.write("Contacts/me.vcf", "2"); }},
      {"its directory moved away", true,
       [&] { std::filesystem::rename(home / "Contacts", home / "Former"); }},
      {"not watched any more", false,
       [&] {
         watch.reset();
         home.write("Contacts/me.vcf", "5");
       }},
  };
  for (const auto& [what, isPosted, change] : rows) {
    change();
    loop.post([&] { loop.post([&] { loop.stop(); }); });
    loop.run();
    const std::vector<std::string> posts = trace.take();
    EXPECT_EQ(!posts.empty(), isPosted) << what;
    for (const auto& post : posts) {
      EXPECT_EQ(post, "caller: post PellanMeCardChangeDistributedNotification");
    }
  }
}

}  // namespace
}  // namespace quenlet
