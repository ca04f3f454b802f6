#include "platform/telephony/PropertyListDeviceInfo.h"

#include <gtest/gtest.h>

#include "platform/files/PosixDataProxy.h"
#include "tests/platform/files/FileTree.h"

namespace quenlet {
namespace {

TEST(PropertyListDeviceInfoTest, BelievesTheOwnersFileBeforeTheSystems) {
  const FileTree files;
  PropertyListDeviceInfo info(files / "device.plist", files / "machine-info",
                              std::make_shared<PosixDataProxy>());
  const std::string key = "<key>DeviceClassNumber</key>";
  // The owner's entries, the system's text, the class.
  const std::tuple<std::string, const char*, int> cases[] = {
      {"", "CHASSIS=handset", 1},
      {"", "# a phone\n\n  CHASSIS=\"hand\\set\"  # mine\nDEPLOYMENT=x\n", 1},
      {"", "CHASSIS=desktop\nCHASSIS='handset'\r\n", 1},
      {"", "CHASSIS=handset\nCHASSIS=laptop", -1},
      {"", "#CHASSIS=handset\nXCHASSIS=handset\nCHASSIS = handset\nCHASSIS=\"handset", -1},
      {key + "<integer>3</integer>", "CHASSIS=handset", 3},
      {key + "<string>3</string>", "CHASSIS=handset", 1},
      {"damage", "CHASSIS=handset", 1},
  };
  EXPECT_EQ(info.integerAnswer(DeviceClassNumberKey, -1), -1) << "no files";
  for (const auto& [entries, text, expected] : cases) {
    files.write("device.plist", "<plist version='1.0'><dict>" + entries + "</dict></plist>");
    files.write("machine-info", text);
    EXPECT_EQ(info.integerAnswer(DeviceClassNumberKey, -1), expected) << entries << text;
  }
}

}  // namespace
}  // namespace quenlet
