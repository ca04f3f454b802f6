#include "platform/files/DirectoryWatch.h"
#include "platform/files/LockFile.h"
#include "platform/files/TrustedProgram.h"
#include "platform/files/UserDirectories.h"
#include "platform/scheduling/EventLoopScheduler.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

using Seen = std::set<std::string>;

// The kernel queues a change before its call returns: one turn sees all that was done before.
class DirectoryWatchTest : public testing::Test {
 protected:
  Seen changesAfter(const std::function<void()>& change) {
    changed.clear();
    change();
    loop.post([this] { loop.post([this] { loop.stop(); }); });
    loop.run();
    return changed;
  }
  void rename(const std::string& from, const std::string& to) {
    std::filesystem::rename(home / from, home / to);
  }

  TemporaryDirectory home;
  EventLoop loop;
  Seen changed;
  const std::shared_ptr<Cancelable> watch = DirectoryWatch::watchDirectory(
      loop, home / "new/cards/", [this](const std::string& name) { changed.insert(name); });
};

TEST_F(DirectoryWatchTest, NamesEntriesHoweverTheyChangeUntilCancelled) {
  EXPECT_EQ(changesAfter([&] { home.write("new/cards/me", "1"); }), Seen({"me"}));
  EXPECT_EQ(changesAfter([&] { home.write("new/cards/me", "in place"); }), Seen({"me"}));
  home.write("outside", "2");
  EXPECT_EQ(changesAfter([&] { rename("outside", "new/cards/me"); }), Seen({"me"}));
  EXPECT_EQ(changesAfter([&] { rename("new/cards/me", "new/cards/you"); }), Seen({"me", "you"}));
  EXPECT_EQ(changesAfter([&] { EXPECT_EQ(home.read("new/cards/you"), "2"); }), Seen());
  EXPECT_EQ(changesAfter([&] { std::filesystem::remove(home / "new/cards/you"); }), Seen({"you"}));
  home.write("new/cards/me", "unseen");
  EXPECT_EQ(changesAfter([&] { watch->cancel(); }), Seen());
}

TEST_F(DirectoryWatchTest, CreatesADirectoryThatGoesAndWatchesTheNewOne) {
  EXPECT_EQ(changesAfter([&] { std::filesystem::remove_all(home / "new"); }), Seen({""}));
  EXPECT_EQ(changesAfter([&] { home.write("new/cards/me", "1"); }), Seen({"me"}));
  EXPECT_EQ(changesAfter([&] { rename("new/cards", "new/old"); }), Seen({""}));
  EXPECT_EQ(changesAfter([&] { home.write("new/old/me", "2"); }), Seen());
  EXPECT_EQ(changesAfter([&] { home.write("new/cards/me", "3"); }), Seen({"me"}));
}

TEST_F(DirectoryWatchTest, TriesAgainUntilItWatchesAndSaysOnceThatItFailed) {
  home.write("file", "in the way");
  testing::internal::CaptureStderr();
  const auto late = DirectoryWatch::watchDirectory(
      loop, home / "file",
      [this](const std::string& name) {
        changed.insert(name.empty() ? "new" : name);
        name.empty() ? home.write("file/me", "1") : loop.stop();
      },
      0.001);
  EventLoopScheduler scheduler(loop);
  const auto end = scheduler.afterDelay(0.02, [this] { std::filesystem::remove(home / "file"); });
  loop.run();
  EXPECT_EQ(changed, Seen({"new", "me"}));
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(said.starts_with("quenlet: ")) << said;
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
}

class UserDirectoriesTest : public testing::Test {
 protected:
  ~UserDirectoriesTest() override { ::unsetenv("TMPDIR"); }
  static void set(const char* name, const std::string& value) { ::setenv(name, value.c_str(), 1); }
  Result<std::filesystem::path> runtime() const {
    return UserDirectories::runtimeDirectory(root / "login");
  }
  std::int64_t failure() const { return runtime().error()->code(); }

  const TemporaryDirectory root;
};

TEST_F(UserDirectoriesTest, ExpandsTheTildeAndTakesAbsolutePathsAlone) {
  set("HOME", "/home of/ann");
  EXPECT_EQ(UserDirectories::expandTilde("~").value(), "/home of/ann");
  EXPECT_EQ(UserDirectories::expandTilde("~/Library/x").value(), "/home of/ann/Library/x");
  EXPECT_EQ(UserDirectories::expandTilde("~bob/x").value(), "~bob/x");
  for (const char* useless : {"", "relative"}) {
    set("HOME", useless);
    EXPECT_TRUE(UserDirectories::homeDirectory().value().is_absolute());
  }
  set("XDG_CONFIG_HOME", "relative");
  EXPECT_EQ(UserDirectories::chosenConfigurationDirectory(), std::nullopt);
}

TEST_F(UserDirectoriesTest, AcceptsOnlyAPrivateRuntimeDirectoryAndMakesItWhenMissing) {
  set("TMPDIR", root.path());
  ::unsetenv("XDG_RUNTIME_DIR");
  const auto own = root / ("quenlet-" + std::to_string(::getuid()));
  EXPECT_EQ(runtime().value(), own);
  EXPECT_EQ(std::filesystem::status(own).permissions(), std::filesystem::perms(0700));
  const auto login = root / "login" / std::to_string(::getuid());
  std::filesystem::create_directories(login);
  EXPECT_EQ(failure(), EACCES) << "open to others, and not passed over";
  std::filesystem::permissions(login, std::filesystem::perms(0700));
  EXPECT_EQ(runtime().value(), login);
  set("XDG_RUNTIME_DIR", root / "run");
  EXPECT_EQ(runtime().value(), root / "run");
  std::filesystem::permissions(root / "run", std::filesystem::perms(0710));
  EXPECT_EQ(failure(), EACCES);
  // Private, but somebody else's: root's home, or for root one that was given away.
  std::filesystem::permissions(root / "run", std::filesystem::perms(0700));
  if (::getuid() == 0) {
    ASSERT_EQ(::chown((root / "run").c_str(), 1, 1), 0);
  } else {
    set("XDG_RUNTIME_DIR", "/root");
  }
  EXPECT_EQ(failure(), EACCES);
  std::filesystem::create_directory_symlink(own, root / "link");
  set("XDG_RUNTIME_DIR", root / "link");
  EXPECT_EQ(failure(), ENOTDIR);
  set("XDG_RUNTIME_DIR", root / "missing/run");
  EXPECT_EQ(failure(), ENOENT);
}

TEST(LockFileTest, ExcludesOthersUntilItGoesAndFollowsNoLink) {
  const TemporaryDirectory home;
  auto first = LockFile::tryLock(home / "lock");
  ASSERT_TRUE(first.ok());
  const ErrorPtr held = LockFile::lock(home / "lock", std::chrono::milliseconds(1)).error();
  EXPECT_EQ(held->code(), EWOULDBLOCK);
  EXPECT_TRUE(held->debugDescription().starts_with("lock lock, held by process " +
                                                   std::to_string(::getpid()) + " ("))
      << held->debugDescription();
  std::move(first).takeValue().reset();
  EXPECT_TRUE(LockFile::lock(home / "lock").ok());
  std::filesystem::create_symlink("lock", home / "link");
  EXPECT_EQ(LockFile::tryLock(home / "link").error()->code(), ELOOP);
  EXPECT_EQ(LockFile::tryLock(home / "missing/lock").error()->code(), ENOENT);
}

// The path was free of links when it was found out; one that has come since may lead anywhere.
TEST(TrustedProgramTest, TrustsNoPathThatHasGotALinkSince) {
  const TemporaryDirectory directory;
  const std::filesystem::path base = directory.path();
  std::filesystem::create_directories(base / "bin");
  directory.write("bin/program", "program");
  EXPECT_EQ(whyUntrusted(base / "bin/program", base), nullptr);
  std::filesystem::create_symlink("bin", base / "link");
  std::filesystem::create_symlink("program", base / "bin/link");
  for (const char* path : {"link/program", "bin/link"}) {
    EXPECT_NE(whyUntrusted(base / path, base), nullptr) << path;
  }
}

}  // namespace
}  // namespace quenlet
