#include "platform/telephony/PropertyListDeviceInfo.h"

#include <gtest/gtest.h>

#include <utility>

#include "platform/files/PosixDataProxy.h"
#include "tests/platform/files/FileTree.h"

namespace quenlet {
namespace {

class PropertyListDeviceInfoTest : public testing::Test {
 protected:
  std::int64_t deviceClass() { return info.integerAnswer(DeviceClassNumberKey, -1); }
  void writeDevice(const std::string& entries) const {
    files.write("device.plist", "<plist version='1.0'><dict>" + entries + "</dict></plist>");
  }

  FileTree files;
  PropertyListDeviceInfo info{files / "device.plist", files / "machine-info",
                              std::make_shared<PosixDataProxy>()};
};

TEST_F(PropertyListDeviceInfoTest, TakesHandsetsForPhones) {
  EXPECT_EQ(deviceClass(), -1) << "no files";
  const std::pair<const char*, int> cases[] = {
      {"CHASSIS=handset", 1},
      {"# a phone\n\n  CHASSIS=\"handset\"  # mine\nDEPLOYMENT=x\n", 1},
      {"CHASSIS=desktop\nCHASSIS='handset'\r\n", 1},
      {"CHASSIS=\"hand\\set\"", 1},
      {"CHASSIS=handset\nCHASSIS=laptop", -1},
      {"#CHASSIS=handset\nXCHASSIS=handset\nCHASSIS = handset", -1},
      {"CHASSIS=\"handset\nCHASSIS", -1},
      {"CHASSIS='hand\\set'", -1},
  };
  for (const auto& [text, expected] : cases) {
    files.write("machine-info", text);
    EXPECT_EQ(deviceClass(), expected) << text;
  }
}

TEST_F(PropertyListDeviceInfoTest, BelievesTheOwnersFileFirst) {
  files.write("machine-info", "CHASSIS=handset");
  const std::string key = "<key>DeviceClassNumber</key>";
  const std::pair<std::string, int> cases[] = {
      {"<key>Other</key><integer>7</integer>" + key + "<integer>3</integer>", 3},
      {key + "<string>3</string>", 1},
      {"", 1},
  };
  for (const auto& [entries, expected] : cases) {
    writeDevice(entries);
    EXPECT_EQ(deviceClass(), expected) << entries;
  }
  EXPECT_EQ(info.integerAnswer("Other", 5), 5);
  testing::internal::CaptureStderr();
  files.write("device.plist", "<plist version='1.0'><array/></plist>");
  EXPECT_EQ(deviceClass(), 1);
  EXPECT_EQ(deviceClass(), 1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "quenlet: device.plist: the top level of the file is not a dictionary\n");
}

}  // namespace
}  // namespace quenlet
