#include "platform/files/DirectoryWatch.h"

#include <gtest/gtest.h>

#include <set>

#include "tests/platform/files/FileTree.h"

namespace quenlet {
namespace {

using Names = std::set<std::string>;

// The kernel queues a change before the call that makes it returns, so that one turn of the loop
// sees all that was done before.
class DirectoryWatchTest : public testing::Test {
 protected:
  Names changesAfter(const std::function<void()>& change) {
    changed.clear();
    change();
    loop.post([this] { loop.post([this] { loop.stop(); }); });
    loop.run();
    return changed;
  }
  void rename(const std::string& from, const std::string& to) {
    std::filesystem::rename(home / from, home / to);
  }

  FileTree home;
  EventLoop loop;
  Names changed;
  const std::shared_ptr<Cancelable> watch = DirectoryWatch::watchDirectory(
      loop, home / "new/cards/", [this](const std::string& name) { changed.insert(name); });
};

TEST_F(DirectoryWatchTest, NamesEntriesHoweverTheyChangeUntilCancelled) {
  EXPECT_EQ(changesAfter([&] { home.write("new/cards/me", "1"); }), Names({"me"}));
  EXPECT_EQ(changesAfter([&] { home.write("new/cards/me", "in place"); }), Names({"me"}));
  home.write("outside", "2");
  EXPECT_EQ(changesAfter([&] { rename("outside", "new/cards/me"); }), Names({"me"}));
  EXPECT_EQ(changesAfter([&] { rename("new/cards/me", "new/cards/you"); }), Names({"me", "you"}));
  EXPECT_EQ(changesAfter([&] { EXPECT_EQ(home.read("new/cards/you"), "2"); }), Names());
  EXPECT_EQ(changesAfter([&] { std::filesystem::remove(home / "new/cards/you"); }), Names({"you"}));
  home.write("new/cards/me", "unseen");
  EXPECT_EQ(changesAfter([&] { watch->cancel(); }), Names());
}

TEST_F(DirectoryWatchTest, CreatesADirectoryThatGoesAndWatchesTheNewOne) {
  EXPECT_EQ(changesAfter([&] { std::filesystem::remove_all(home / "new"); }), Names({""}));
  EXPECT_EQ(changesAfter([&] { home.write("new/cards/me", "1"); }), Names({"me"}));
  EXPECT_EQ(changesAfter([&] { rename("new/cards", "new/old"); }), Names({""}));
  EXPECT_EQ(changesAfter([&] { home.write("new/old/me", "2"); }), Names());
  EXPECT_EQ(changesAfter([&] { home.write("new/cards/me", "3"); }), Names({"me"}));
}

}  // namespace
}  // namespace quenlet
