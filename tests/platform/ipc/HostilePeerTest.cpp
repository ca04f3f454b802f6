#include <gtest/gtest.h>

#include <fstream>

#include "platform/ipc/EntitlementDatabase.h"
#include "platform/ipc/WireEncoder.h"
#include "platform/ipc/WireReader.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

TEST(HostilePeerTest, CannotMakeATreeLargerThanTheReaderWants) {
  WireEncoder encoder;
  encoder.list(3).list(1).null().dictionary(1).string("key").integer(1).integer(2).string("end");
  for (const std::size_t bound : {0, 1, 2, 5}) {
    WireReader reader(encoder.bytes());
    EXPECT_EQ(reader.propertyList(bound), std::nullopt);
    EXPECT_EQ(reader.string(), "end") << bound;
  }
  const std::string tree =
      std::move(WireEncoder().list(2).list(1).integer(1).dictionary(1).string("k").integer(2))
          .take();
  EXPECT_EQ(WireReader(tree).propertyList(4), std::nullopt);
  EXPECT_NE(WireReader(tree).propertyList(5), std::nullopt);
}

TEST(HostilePeerTest, CannotEntitleItselfThroughADirectoryAbove) {
  const TemporaryDirectory prefix;
  std::filesystem::create_directories(prefix.path() / "share/quenlet/entitlements");
  std::ofstream(prefix.path() / "share/quenlet/entitlements/a.plist")
      << "<plist><dict><key>/a</key><dict><key>card</key><true/></dict></dict></plist>";
  EXPECT_TRUE(EntitlementDatabase(prefix.path()).value("/a", "card"));
  for (const char* directory : {".", "share", "share/quenlet"}) {
    const std::filesystem::path opened = prefix.path() / directory;
    std::filesystem::permissions(opened, std::filesystem::perms(0775));
    EXPECT_FALSE(EntitlementDatabase(prefix.path()).value("/a", "card")) << directory;
    std::filesystem::permissions(opened, std::filesystem::perms(0755));
  }
}

}  // namespace
}  // namespace quenlet
