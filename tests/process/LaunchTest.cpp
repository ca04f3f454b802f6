#include <gmock/gmock.h>

#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

class LaunchTest : public ProcessTest {
 protected:
  // The events and the printed lines, in the order in which they came.
  [[nodiscard]] std::vector<std::string> happened() const {
    std::vector<std::string> words;
    std::istringstream lines(agent->out());
    for (std::string line; std::getline(lines, line);) {
      const auto event = line.find("\"event\":\"");
      words.push_back(event == line.npos
                          ? line
                          : line.substr(event + 9, line.find('"', event + 9) - event - 9));
    }
    return words;
  }
  [[nodiscard]] bool hasHappened(const std::string& what, int times = 1) const {
    const auto words = happened();
    return std::count(words.begin(), words.end(), what) >= times;
  }
};

TEST_F(LaunchTest, DoesEverythingInOrderFromLaunchToTheSecondHangUp) {
  writeFile(ownersCard, cardText("Anna Berg", {"EMAIL:anna@example.org"}));
  agent = start({"/bin/sh", "-c", "exec \"$0\" 2>&1", bin / "quenlet-agent"});
  for (int times = 1; times <= 3; ++times) {
    ASSERT_TRUE(eventually([&] {
      return hasHappened("didReportAnalytics") && hasHappened("Discovery completed", times);
    }));
    agent->signal(times < 3 ? SIGHUP : SIGTERM);
  }
  EXPECT_EQ(agent->wait(), 0);

  std::vector<std::string> words = happened();
  // Two rows run side by side at launch: the restore on the agent's own scheduler, the owner's card
  // on the main thread.
  std::vector<std::string> ofCard;
  std::erase_if(words, [&](const std::string& word) {
    if (!word.starts_with("contactsChanged")) return false;
    ofCard.push_back(word);
    return true;
  });
  EXPECT_EQ(ofCard,
            (std::vector<std::string>{"contactsChangedNotificationFoundName:nameChanged:",
                                      "contactsChangedNotificationEmailAddressesChanged:"}));
  const std::vector<std::string> discovery = {
      "Discovering all extensions",
      "Discovered extensions: donor extension org.quenlet.vcard-extension", "Discovery completed"};
  std::vector<std::string> expected = {"agentWillStart",           "beginRestorePersistedState",
                                       "endRestorePersistedState", "featureWillEnable",
                                       "featureDidEnable",         "willLoadExtensionVersions",
                                       "willSaveExtensionVersions"};
  expected.insert(expected.end(), discovery.begin(), discovery.end());
  for (const char* word : {"willReportAnalytics", "agentWillHandleRequest:", "didReportAnalytics",
                           "agentDidHandleRequest:"}) {
    expected.push_back(word);
  }
  for (int times = 0; times < 2; ++times) {
    expected.push_back("Hup hup hup!!");
    expected.insert(expected.end(), discovery.begin(), discovery.end());
  }
  expected.push_back("agentWillStop");
  EXPECT_EQ(words, expected);
}

// Whatever the device's class is.
TEST_F(LaunchTest, ReportsOnceADayFiveSecondsAfterALaunch) {
  writeFile(ownersCard, cardText("Anna Berg", {"EMAIL:anna@example.org", "TEL:+49 30 1234567"}));
  const std::filesystem::path counters = home / "Library/Logs/quenlet/counters.prom";
  std::string counted;
  for (const char* deviceClass : {"1", "2"}) {
    writeFile(home / "Library/Telephony/device.plist",
              std::string("<plist version=\"1.0\"><dict><key>DeviceClassNumber</key><integer>") +
                  deviceClass + "</integer></dict></plist>");
    const auto launch = std::chrono::steady_clock::now();
    startAgent();
    EXPECT_EQ(
        donate("com.example.mail", "Anna Berg", {"TEL:030 1234567", "TEL:+49 89 7654321"}).code, 0);
    ASSERT_TRUE(eventually(
        [this] { return agent->err().find("didReportAnalytics") != std::string::npos; }));
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - launch;
    EXPECT_THAT(passed.count(), testing::AllOf(testing::Ge(5), testing::Le(20))) << deviceClass;
    const bool isFirst = counted.empty();
    EXPECT_EQ(agent->err().find("withinReportingInterval:") == std::string::npos, isFirst);
    EXPECT_EQ(stopAgent(), 0);
    if (isFirst) counted = readFile(counters);
  }
  EXPECT_EQ(readFile(counters), counted);
  EXPECT_THAT(quenlet({"stats"}).out,
              testing::HasSubstr("\n  phone numbers     1.0                1.0  1\n"));
}

}  // namespace
}  // namespace quenlet
