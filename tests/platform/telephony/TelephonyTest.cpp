#include "platform/files/PosixDataProxy.h"
#include "platform/telephony/PropertyListDeviceInfo.h"
#include "platform/telephony/PropertyListPhoneNumberMonitor.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

std::string number(const std::string& identifier, const std::string& value) {
  return "<dict><key>identifier</key><string>" + identifier + "</string><key>value</key><string>" +
         value + "</string></dict>";
}

class PropertyListPhoneNumberMonitorTest : public testing::Test {
 protected:
  void write(const std::string& elements) const {
    files.write("sim.plist", "<plist version='1.0'><array>" + elements + "</array></plist>");
  }
  static std::string described(const SIMCardItems& items) {
    std::string text;
    for (const SIMCardItem& item : items) text += item.identifier + "=" + item.value + ";";
    return text.empty() ? "none;" : text;
  }
  // What the handler was told since the last call. Two rounds handle all changes of files.
  std::string told() {
    loop.post([this] { loop.post([this] { loop.stop(); }); });
    loop.run();
    return std::exchange(changes, {});
  }
  TemporaryDirectory files;
  EventLoop loop;
  PropertyListPhoneNumberMonitor monitor{files / "sim.plist", std::make_shared<PosixDataProxy>(),
                                         loop};
  std::string changes;
  const std::shared_ptr<Cancelable> token = monitor.addInfoChangeHandler(
      [this](const SIMCardItems& items) { changes += described(items); });
};

TEST_F(PropertyListPhoneNumberMonitorTest, TellsOfRealChangesUntilCancelled) {
  monitor.addInfoChangeHandler([this](const SIMCardItems&) { changes += "late"; })->cancel();
  EXPECT_EQ(told(), "none;") << "so that numbers of an earlier time go";
  write(number("1", "112") + number("2", ""));
  EXPECT_EQ(changes, "") << "only on the loop's thread";
  EXPECT_EQ(told(), "1=112;2=;") << "none had gone";
  write("<!-- same -->" + number("1", "112") + number("2", ""));
  EXPECT_EQ(told(), "");
  std::string tooMany;
  for (int i = 0; i < 1000; ++i) tooMany += number("1", "112");

  int failures = 0;
  for (const std::string& damage : {std::string("<dict/>"), std::string("secret"), tooMany,
                                    std::string("secret"), number("", "1")}) {
    testing::internal::CaptureStderr();
    write(number("1", "112") + damage);
    EXPECT_EQ(told(), "");
    monitor.infoWithCompletion(
        [&](const auto& items, const ErrorPtr& error) { failures += !items && error; });
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    EXPECT_EQ(said.find("secret"), said.npos) << said;
  }
  write(number("2", "") + number("3", "113"));
  EXPECT_EQ(told(), "none;2=;3=113;") << "one has gone";
  const auto second = monitor.addInfoChangeHandler(
      [this](const SIMCardItems& items) { changes += "second " + described(items); });
  EXPECT_EQ(told(), "second none;second 2=;3=113;") << "some may have gone before";
  second->cancel();
  std::filesystem::remove(files / "sim.plist");
  EXPECT_EQ(told(), "none;");
  token->cancel();
  write(number("2", "113"));
  EXPECT_EQ(told(), "");

  monitor.infoWithCompletion([&](const auto& items, const auto&) { changes = described(*items); });
  EXPECT_EQ(changes, "2=113;");
  EXPECT_EQ(failures, 5);
}

TEST(PropertyListDeviceInfoTest, BelievesTheOwnersFileBeforeTheSystems) {
  const TemporaryDirectory files;
  PropertyListDeviceInfo info(files / "device.plist",
                              {files / "machine-info", files / "chassis-type"},
                              std::make_shared<PosixDataProxy>());
  const std::string key = "<key>DeviceClassNumber</key>";
  const std::string handset("handset", 8);
  // The owner's entries, the administrator's text, the class, the firmware's word.
  const std::tuple<std::string, const char*, int, std::string> cases[] = {
      {"", "CHASSIS=handset", 1, ""},
      {"", "# a phone\n\n  CHASSIS=\"hand\\set\"  # mine\nDEPLOYMENT=x\n", 1, ""},
      {"", "CHASSIS='handset'\t# mine", 1, ""},
      {"", "CHASSIS='hand\\set'", -1, ""},
      {"", "CHASSIS=hand\\\"set\\\"", -1, ""},
      {"", "CHASSIS=handset\nCHASSIS=laptop", -1, ""},
      {"", "#CHASSIS=handset\nXCHASSIS=handset\nCHASSIS = handset\nCHASSIS=\"handset", -1, ""},
      {key + "<integer>3</integer>", "CHASSIS=handset", 3, ""},
      {key + "<string>3</string>", "CHASSIS=handset", 1, ""},
      {"damage", "CHASSIS=handset", 1, ""},
      {"", "", 1, handset},
      {"", "DEPLOYMENT=handset", 1, handset},
      {"", "CHASSIS=tablet", -1, handset},
      {"", "CHASSIS=handset", 1, std::string("tablet", 7)},
      {key + "<integer>3</integer>", "", 3, handset},
      {"", "", -1, "handset2"},
      {"", "", -1, "handset\n"},
  };
  testing::internal::CaptureStderr();
  EXPECT_EQ(info.integerAnswer(DeviceClassNumberKey, -1), -1) << "no files";
  for (const auto& [entries, text, expected, word] : cases) {
    files.write("device.plist", "<plist version='1.0'><dict>" + entries + "</dict></plist>");
    files.write("machine-info", text);
    files.write("chassis-type", word);
    EXPECT_EQ(info.integerAnswer(DeviceClassNumberKey, -1), expected) << entries << text;
  }
  files.write("chassis-type", handset);
  EXPECT_EQ(info.integerAnswer("Other", 7), 7) << "of a handset";
  EXPECT_TRUE(testing::internal::GetCapturedStderr().starts_with("quenlet: device.plist: "));
}

}  // namespace
}  // namespace quenlet
