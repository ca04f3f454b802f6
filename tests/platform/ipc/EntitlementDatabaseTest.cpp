#include "platform/ipc/EntitlementDatabase.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <string>

#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

class EntitlementDatabaseTest : public testing::Test {
 protected:
  void write(const std::string& name, const std::string& content, mode_t mode = 0644) {
    std::ofstream(files / name) << content;
    EXPECT_EQ(::chmod((files / name).c_str(), mode), 0);
  }
  static std::string grant(const std::string& program, const std::string& value) {
    return "<plist version=\"1.0\"><dict><key>" + program + "</key><dict><key>card</key>" + value +
           "</dict></dict></plist>";
  }

  TemporaryDirectory directory;
  const std::filesystem::path prefix = std::filesystem::canonical(directory.path());
  const std::filesystem::path files = prefix / "share/quenlet/entitlements";
};

TEST_F(EntitlementDatabaseTest, TakesTrustedFilesAndNamesTheOthers) {
  std::filesystem::create_directories(files);
  write("a.plist", grant("bin/near", "<true/>"));
  write("b.plist", grant("/opt/far", "<integer>1</integer>"));
  write("c.plist", grant("bin/near", "<string>later</string>"), 0600);
  write("group.plist", grant("/group", "<true/>"), 0664);
  write("others.plist", grant("/others", "<true/>"), 0646);
  write("broken.plist", "<plist version=\"1.0\"><dict><key>secret");
  write("shape.plist", "<plist version=\"1.0\"><dict><key>/shape</key><true/></dict></plist>");
  write("notes.txt", grant("/text", "<true/>"));
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
  std::filesystem::create_directories(files);
  write("a.plist", grant("/a", "<true/>"));
  for (const char* directory : {".", "share", "share/quenlet", "share/quenlet/entitlements"}) {
    ASSERT_EQ(::chmod((prefix / directory).c_str(), 0775), 0);
    EXPECT_EQ(EntitlementDatabase(prefix).value("/a", "card"), std::nullopt) << directory;
    ASSERT_EQ(::chmod((prefix / directory).c_str(), 0755), 0);
  }
  EXPECT_EQ(EntitlementDatabase(prefix).value("/a", "card"), PropertyList(true));
}

}  // namespace
}  // namespace quenlet
