#include <gtest/gtest.h>

#include "platform/files/PosixDataProxy.h"
#include "tests/platform/files/FileTree.h"

namespace quenlet {
namespace {

TEST(KeptFilesTest, KeepsADamagedFileByALinkThroughTheNextWrite) {
  const FileTree home;
  PosixDataProxy proxy;
  home.write("real", "damaged");
  std::filesystem::permissions(home / "real", std::filesystem::perms::none);
  std::filesystem::create_symlink("real", home / "file");
  for (int i = 0; i < 2; ++i) proxy.keepDamagedFile(home / "file");
  EXPECT_TRUE(std::filesystem::equivalent(home / "real", home / "file.damaged-1"));
  EXPECT_FALSE(std::filesystem::is_symlink(home / "file.damaged-1"));
  EXPECT_TRUE(proxy.writeData("new", home / "file", WritingOptions::atomic).result().isLeft());
  std::filesystem::permissions(home / "file.damaged-1", std::filesystem::perms::owner_read);
  EXPECT_EQ(home.read("file.damaged-1"), "damaged");
  EXPECT_EQ(home.names(), (std::vector<std::string>{"file", "file.damaged-1", "real"}));
  std::filesystem::resize_file(home / "file", PosixDataProxy::maximumFileSizeInBytes + 1);
  EXPECT_EQ(proxy.dataWithContentsOfURL(home / "file").result().right()->code(), EFBIG);
}

}  // namespace
}  // namespace quenlet
