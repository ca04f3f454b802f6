#include "platform/files/UserDirectories.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <optional>

#include "tests/platform/files/FileTree.h"

namespace quenlet {
namespace {

namespace files = std::filesystem;

// Sets an environment variable (removes it for null) and puts it back at the end.
class ScopedVariable final {
 public:
  ScopedVariable(const char* variable, const char* value) : name(variable) {
    if (const char* present = std::getenv(variable)) before = present;
    set(value);
  }
  ~ScopedVariable() { set(before ? before->c_str() : nullptr); }
  void set(const char* value) { value != nullptr ? ::setenv(name, value, 1) : ::unsetenv(name); }

 private:
  const char* name;
  std::optional<std::string> before;
};

TEST(UserDirectoriesTest, ExpandsTheTildeToAnAbsoluteHome) {
  ScopedVariable home("HOME", "/somewhere/ann");
  const std::pair<const char*, const char*> rows[] = {{"~", "/somewhere/ann"},
                                                      {"~/", "/somewhere/ann"},
                                                      {"~/Library/x", "/somewhere/ann/Library/x"},
                                                      {"~bob/x", "~bob/x"},
                                                      {"/a/~/b", "/a/~/b"}};
  for (const auto& [path, expanded] : rows) {
    EXPECT_EQ(UserDirectories::expandTilde(path).left(), expanded);
  }
  for (const char* useless : {static_cast<const char*>(nullptr), "", "relative"}) {
    home.set(useless);
    const auto found = UserDirectories::homeDirectory();
    ASSERT_TRUE(found.isLeft());
    EXPECT_TRUE(found.left().is_absolute());
    EXPECT_NE(found.left(), "/somewhere/ann");
  }
}

TEST(UserDirectoriesTest, AcceptsOnlyAPrivateRuntimeDirectory) {
  const FileTree root;
  ScopedVariable runtime("XDG_RUNTIME_DIR", (root / "run").c_str());
  const auto failure = [] {
    const auto found = UserDirectories::runtimeDirectory();
    return found.isLeft() ? 0 : found.right()->code();
  };
  EXPECT_EQ(failure(), 0) << "created when missing";
  EXPECT_EQ(UserDirectories::runtimeDirectory().left(), root / "run");
  files::permissions(root / "run", files::perms(0710));
  EXPECT_EQ(failure(), EACCES);
  files::permissions(root / "run", files::perms(0700));
  files::create_directory_symlink(root / "run", root / "link");
  runtime.set((root / "link").c_str());
  EXPECT_EQ(failure(), ENOTDIR);
  runtime.set((root / "missing/run").c_str());
  EXPECT_EQ(failure(), ENOENT);
}

TEST(UserDirectoriesTest, MakesARuntimeDirectoryAmongTemporaryFilesWhenNoneIsGiven) {
  const FileTree root;
  const ScopedVariable runtime("XDG_RUNTIME_DIR", nullptr);
  const ScopedVariable temporary("TMPDIR", root.root().c_str());
  const auto expected = root / ("quenlet-" + std::to_string(::getuid()));
  EXPECT_EQ(UserDirectories::runtimeDirectory().left(), expected);
  EXPECT_EQ(files::status(expected).permissions(), files::perms(0700));
}

}  // namespace
}  // namespace quenlet
