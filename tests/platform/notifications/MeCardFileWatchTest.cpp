#include "platform/notifications/MeCardFileWatch.h"

#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

class CountingNotificationCenter final : public DistributedNotificationCenter {
 public:
  int posts = 0;
  std::shared_ptr<Cancelable> addObserver(const std::string&, std::function<void()>) override {
    return nullptr;
  }
  void post(const std::string& name) override {
    EXPECT_EQ(name, "PellanMeCardChangeDistributedNotification");
    ++posts;
  }
};

TEST(MeCardFileWatchTest, PostsEachChangeOfTheCardHoweverItComesAndOfNothingElse) {
  const TemporaryDirectory home;
  EventLoop loop;
  const auto center = std::make_shared<CountingNotificationCenter>();
  auto watch = std::make_unique<MeCardFileWatch>(loop, home / "Contacts/me.vcf", center);
  const std::tuple<const char*, bool, std::function<void()>> rows[] = {
      {"another file", false, [&] { home.write("Contacts/you.vcf", "1"); }},
      {"written", true, [&] { home.write("Contacts/me.vcf", "2"); }},
      {"replaced", true,
       [&] { std::filesystem::rename(home / "Contacts/you.vcf", home / "Contacts/me.vcf"); }},
      {"its directory moved away", true,
       [&] { std::filesystem::rename(home / "Contacts", home / "Former"); }},
      {"written where it was", false, [&] { home.write("Former/me.vcf", "3"); }},
      {"written in the new directory", true, [&] { home.write("Contacts/me.vcf", "4"); }},
      {"deleted", true, [&] { std::filesystem::remove(home / "Contacts/me.vcf"); }},
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
    EXPECT_EQ(std::exchange(center->posts, 0) > 0, isPosted) << what;
  }
}

}  // namespace
}  // namespace quenlet
