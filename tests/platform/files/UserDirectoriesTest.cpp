#include "platform/files/UserDirectories.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <map>

#include "tests/platform/files/FileTree.h"

namespace quenlet {
namespace {

// Puts the environment back at the end.
class UserDirectoriesTest : public testing::Test {
 protected:
  ~UserDirectoriesTest() override {
    for (const auto& [name, value] : before) ::setenv(name.c_str(), value.c_str(), 1);
  }
  void set(const char* name, const std::string& value) {
    if (const char* present = std::getenv(name)) before.emplace(name, present);
    ::setenv(name, value.c_str(), 1);
  }
  static std::int64_t failure() {
    const auto found = UserDirectories::runtimeDirectory();
    return found.isLeft() ? 0 : found.right()->code();
  }

  const FileTree root;
  std::map<std::string, std::string> before;
};

TEST_F(UserDirectoriesTest, ExpandsTheTildeToAnAbsoluteHome) {
  set("HOME", "/home of/ann");
  EXPECT_EQ(UserDirectories::expandTilde("~").left(), "/home of/ann");
  EXPECT_EQ(UserDirectories::expandTilde("~/Library/x").left(), "/home of/ann/Library/x");
  EXPECT_EQ(UserDirectories::expandTilde("~bob/x").left(), "~bob/x");
  for (const char* useless : {"", "relative"}) {
    set("HOME", useless);
    EXPECT_TRUE(UserDirectories::homeDirectory().left().is_absolute());
  }
}

TEST_F(UserDirectoriesTest, AcceptsOnlyAPrivateRuntimeDirectoryAndMakesItWhenMissing) {
  set("TMPDIR", root.root());
  set("XDG_RUNTIME_DIR", "");
  ::unsetenv("XDG_RUNTIME_DIR");
  const auto own = root / ("quenlet-" + std::to_string(::getuid()));
  EXPECT_EQ(UserDirectories::runtimeDirectory().left(), own);
  EXPECT_EQ(std::filesystem::status(own).permissions(), std::filesystem::perms(0700));
  set("XDG_RUNTIME_DIR", root / "run");
  EXPECT_EQ(UserDirectories::runtimeDirectory().left(), root / "run");
  std::filesystem::permissions(root / "run", std::filesystem::perms(0710));
  EXPECT_EQ(failure(), EACCES);
  std::filesystem::create_directory_symlink(own, root / "link");
  set("XDG_RUNTIME_DIR", root / "link");
  EXPECT_EQ(failure(), ENOTDIR);
  set("XDG_RUNTIME_DIR", root / "missing/run");
  EXPECT_EQ(failure(), ENOENT);
}

}  // namespace
}  // namespace quenlet
