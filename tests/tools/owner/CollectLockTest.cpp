#include "tools/owner/CollectLock.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

TEST(CollectLockTest, LeavesTheWordThatAUnitWaitsFor) {
  const TemporaryDirectory runtime;
  std::filesystem::permissions(runtime.path(), std::filesystem::perms::owner_all);
  ::setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);
  for (int time = 0; time < 2; ++time) EXPECT_EQ(CollectLock::leaveWord(), nullptr);
  EXPECT_EQ(runtime.read("quenlet-collect-wanted"), "");
  EXPECT_TRUE(std::filesystem::exists(runtime / "quenlet-collect-wanted"));
  std::filesystem::permissions(runtime.path(), std::filesystem::perms::all);
  EXPECT_NE(CollectLock::leaveWord(), nullptr);
}

}  // namespace
}  // namespace quenlet
