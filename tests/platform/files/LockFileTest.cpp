#include "platform/files/LockFile.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "tests/platform/files/FileTree.h"

namespace quenlet {
namespace {

TEST(LockFileTest, ExcludesOthersUntilItGoesAndFollowsNoLink) {
  const FileTree home;
  auto first = LockFile::tryLock(home / "lock");
  ASSERT_TRUE(first.isLeft());
  EXPECT_EQ(LockFile::tryLock(home / "lock").right()->code(), EWOULDBLOCK);
  std::move(first).takeLeft().reset();
  EXPECT_TRUE(LockFile::lock(home / "lock").isLeft());
  std::filesystem::create_symlink("lock", home / "link");
  EXPECT_EQ(LockFile::tryLock(home / "link").right()->code(), ELOOP);
  EXPECT_EQ(LockFile::tryLock(home / "missing/lock").right()->code(), ENOENT);
}

}  // namespace
}  // namespace quenlet
