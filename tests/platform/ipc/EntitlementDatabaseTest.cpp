#include "platform/ipc/EntitlementDatabase.h"

#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

class EntitlementDatabaseTest : public testing::Test {
 protected:
  static std::string grant(const std::string& program, const std::string& value) {
    return "<plist version=\"1.0\"><dict><key>" + program + "</key><dict><key>card</key>" + value +
           "</dict></dict></plist>";
  }

  TemporaryDirectory directory;
  const std::filesystem::path prefix = std::filesystem::canonical(directory.path());
  const std::filesystem::path files = prefix / "share/quenlet/entitlements";
};

TEST_F(EntitlementDatabaseTest, TakesTrustedFilesAndNamesTheOthers) {
  writeFile(files / "a.plist", grant("bin/near", "<true/>"));
  writeFile(files / "b.plist", grant("/opt/far", "<integer>1</integer>"));
  writeFile(files / "c.plist", grant("bin/near", "<string>later</string>"), 0600);
  writeFile(files / "group.plist", grant("/group", "<true/>"), 0664);
  writeFile(files / "others.plist", grant("/others", "<true/>"), 0646);
  writeFile(files / "broken.plist", "<plist version=\"1.0\"><dict><key>secret");
  writeFile(files / "shape.plist",
            "<plist version=\"1.0\"><dict><key>/shape</key><true/></dict></plist>");
  writeFile(files / "notes.txt", grant("/text", "<true/>"));
  ASSERT_EQ(::mkfifo((files / "pipe.plist").c_str(), 0600), 0);

  testing::internal::CaptureStderr();
  const EntitlementDatabase database(prefix);
  const std::string report = testing::internal::GetCapturedStderr();

  EXPECT_EQ(database.value(prefix / "bin/near", "card"), PropertyList("later"));
  EXPECT_EQ(database.value("/opt/far", "card"), PropertyList(1));
  EXPECT_EQ(database.value("/opt/far", "other"), std::nullopt);
  for (const char* program : {"/group", "/others", "/shape", "/text", "bin/near", ""}) {
    EXPECT_EQ(database.value(program, "card"), std::nullopt) << program;
  }
  for (const char* file : {"group", "others", "broken", "shape", "pipe"}) {
    EXPECT_NE(report.find("/" + std::string(file) + ".plist are ignored"), std::string::npos)
        << file << " in " << report;
  }
  EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 5) << report;
  EXPECT_EQ(report.find("secret"), std::string::npos);
}

TEST_F(EntitlementDatabaseTest, TrustsNoDirectoryBelowThePrefixThatOthersCanWrite) {
  writeFile(files / "a.plist", grant("/a", "<true/>"));
  for (const char* directory : {".", "share", "share/quenlet", "share/quenlet/entitlements"}) {
    ASSERT_EQ(::chmod((prefix / directory).c_str(), 0775), 0);
    EXPECT_EQ(EntitlementDatabase(prefix).value("/a", "card"), std::nullopt) << directory;
    ASSERT_EQ(::chmod((prefix / directory).c_str(), 0755), 0);
  }
  EXPECT_EQ(EntitlementDatabase(prefix).value("/a", "card"), PropertyList(true));
}

}  // namespace
}  // namespace quenlet
