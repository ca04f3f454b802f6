#include "platform/telephony/PropertyListPhoneNumberMonitor.h"

#include <gtest/gtest.h>

#include "platform/files/PosixDataProxy.h"
#include "tests/platform/files/FileTree.h"

namespace quenlet {
namespace {

// The dictionary of one number.
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
  // What the handler was told since the last call. Changes of files are there for the loop to see
  // as soon as they are made: two rounds handle them.
  std::string told() {
    loop.post([this] { loop.post([this] { loop.stop(); }); });
    loop.run();
    return std::exchange(changes, {});
  }
  FileTree files;
  EventLoop loop;
  PropertyListPhoneNumberMonitor monitor{files / "sim.plist", std::make_shared<PosixDataProxy>(),
                                         loop};
  std::string changes;
  const std::shared_ptr<Cancelable> token = monitor.addInfoChangeHandler(
      [this](const SIMCardItems& items) { changes += described(items); });
};

TEST_F(PropertyListPhoneNumberMonitorTest, TellsOfRealChangesUntilCancelled) {
  EXPECT_EQ(told(), "none;") << "so that numbers of an earlier time go";
  write(number("1", "112") + number("2", ""));
  EXPECT_EQ(changes, "") << "only on the loop's thread";
  EXPECT_EQ(told(), "1=112;2=;");
  write("<!-- same -->" + number("1", "112") + number("2", ""));
  EXPECT_EQ(told(), "");
  std::string tooMany;
  for (int i = 0; i < 1000; ++i) tooMany += number("1", "112");
  int completions = 0;
  for (const std::string& damage : {std::string("<dict/>"), std::string("secret"), tooMany}) {
    testing::internal::CaptureStderr();
    write(number("1", "112") + damage);
    EXPECT_EQ(told(), "");
    monitor.infoWithCompletion([&](const auto& items, const ErrorPtr& error) {
      ++completions;
      EXPECT_TRUE(!items && error);
    });
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    EXPECT_EQ(said.find("secret"), said.npos) << said;
  }
  std::filesystem::remove(files / "sim.plist");
  EXPECT_EQ(told(), "none;");
  token->cancel();
  write(number("2", "113"));
  EXPECT_EQ(told(), "");
  monitor.infoWithCompletion([&](const auto& items, const ErrorPtr&) {
    ++completions;
    EXPECT_EQ(described(*items), "2=113;");
  });
  EXPECT_EQ(completions, 4);
}

}  // namespace
}  // namespace quenlet
