
#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using testing::HasSubstr;

class AgentLifeTest : public ProcessTest {
 protected:
  const std::vector<std::string> addressLine = {"EMAIL:anna@example.org"};

  void donateAddress() { EXPECT_EQ(donate("com.example.mail", "Anna Berg", addressLine).code, 0); }

  [[nodiscard]] std::vector<std::string> happened() const {
    std::vector<std::string> words;
    std::istringstream lines(agent->out());
    for (std::string line; std::getline(lines, line);) {
      const auto event = line.find("\"event\":\"") + 9;
      words.push_back(line.starts_with('{') ? line.substr(event, line.find('"', event) - event)
                                            : line);
    }
    return words;
  }
};

TEST_F(AgentLifeTest, GivesWayToAnAgentThatRuns) {
  startAgent();
  donateAddress();
  const auto written = std::filesystem::last_write_time(donationsFile);
  const Ran second = run({bin / "quenlet-agent"});
  EXPECT_EQ(second.code, 1);
  EXPECT_THAT(second.err, HasSubstr("quenlet-agent: ovaro.quenlet.service-error 10"));
  EXPECT_EQ(std::filesystem::last_write_time(donationsFile), written);

  const std::filesystem::path otherHome = temporary / "other home";
  EXPECT_EQ(run({"env", "HOME=" + otherHome.string(), bin / "quenlet-agent"}).code, 1);
  EXPECT_FALSE(std::filesystem::exists(otherHome)) << "who gives way leaves nothing behind";
}

TEST_F(AgentLifeTest, DoesNotStartOverAFileThatCannotBeReadOrLocked) {
  const std::filesystem::path lock = donationsFile.parent_path() / "agent.lock";
  for (const auto& file : {donationsFile, home / "Library/Contacts/Feedback/feedback.plist",
                           home / "Library/Preferences/ovaro.quenlet.plist", lock}) {
    std::filesystem::create_directories(file);  // nobody's permissions let it be read as a file
    const Ran ran = run({bin / "quenlet-agent"});
    EXPECT_EQ(ran.code, 75) << file;
    EXPECT_THAT(ran.err, testing::StartsWith("quenlet-agent: posix-error 21: " + file.string()));
    EXPECT_THAT(ran.err, testing::Not(HasSubstr("agentWillStart")));
    std::filesystem::remove(file);
  }
  std::filesystem::create_symlink("elsewhere", lock);
  EXPECT_EQ(run({bin / "quenlet-agent"}).code, 75);
  std::filesystem::remove(lock);
  startAgent();
}

// Takes the 30 seconds that the owner has to change their mind.
TEST_F(AgentLifeTest, RefusesWhileDisabledAndDeletesAllDonationsAWhileLater) {
  startAgent();
  donateAddress();
  disableDonations();

  EXPECT_EQ(quenlet({"list"}).err,
            "quenlet: ovaro.quenlet.donation-error 1: donations are not enabled\n");
  agent->signal(SIGHUP);
  ASSERT_TRUE(eventually([this] { return agent->out().ends_with("Hup hup hup!!\n"); }));
  EXPECT_EQ(quenlet({"enable"}).code, 0);
  ASSERT_TRUE(eventually([this] { return countDonations() == 2; })) << "enabled in time";

  EXPECT_EQ(quenlet({"disable"}).code, 0);
  ASSERT_TRUE(eventually([this] { return !fileHas("anna@example.org"); }));
  EXPECT_EQ(quenlet({"enable"}).code, 0);
  ASSERT_TRUE(eventually([this] { return countDonations() == 0; }));
}

TEST_F(AgentLifeTest, FollowsTheOwnersCardAndTellsWatchers) {
  writeFile(ownersCard, cardText("Anna Berg", {}));
  startAgent();
  donateAddress();
  EXPECT_TRUE(cardHas("anna@example.org"));
  const auto watcher = start({bin / "quenlet", "watch"});
  ASSERT_TRUE(eventually([&] { return watcher->out() == "watching…\n"; }));

  writeFile(ownersCard, cardText("Anna Berg", addressLine));
  EXPECT_TRUE(eventually([this] { return !cardHas("anna@example.org"); }))
      << "the owner's card has the address now, written in place";
  writeFile(home / "new", cardText("Bertha Maier", {}));
  std::filesystem::rename(home / "new", ownersCard);
  EXPECT_TRUE(eventually([this] { return card() == "The card is empty.\n"; }))
      << "the donor contradicts the name on the card that took the place of the former one";

  const std::string line = "ovaro.quenlet.me-card-values-did-change\n";
  EXPECT_TRUE(eventually([&] { return watcher->says(line); }));
  watcher->signal(SIGINT);
  EXPECT_EQ(watcher->wait(), 0);
}

TEST_F(AgentLifeTest, PutsNoFileInThePlaceOfClosedStandardDescriptors) {
  agent = start({"/bin/sh", "-c", "exec '" + (bin / "quenlet-agent").native() + "' <&- >&- 2>&-"});
  ASSERT_TRUE(eventually([this] { return countDonations() >= 0; }));
  for (const char* descriptor : {"0", "1", "2"}) {
    EXPECT_EQ(std::filesystem::read_symlink(agent->processDirectory() / "fd" / descriptor),
              "/dev/null");
  }
}

TEST_F(AgentLifeTest, ClientSaysThatThereIsNoAgentAndDisablesWithoutOne) {
  EXPECT_EQ(quenlet({"card"}).code, 3);
  EXPECT_EQ(quenlet({"disable"}).code, 0);
  const Ran status = quenlet({"status", "--json"});
  EXPECT_EQ(status.code, 3);
  EXPECT_THAT(status.out, HasSubstr(R"({"donationsEnabled":false,"agentAnswers":false,)"));
}

TEST_F(AgentLifeTest, DoesEverythingInOrderFromLaunchToTheSecondHangUp) {
  writeFile(ownersCard, cardText("Anna Berg", {"EMAIL:anna@example.org"}));
  installManifest("com.example.old");
  // Nothing is looked for where confined programs may write.
  std::filesystem::create_directories(home / "Library");
  std::filesystem::rename(extensions, home / "Library/Extensions");
  installManifest("com.example.donor");
  agent = start({"/bin/sh", "-c", "exec \"$0\" 2>&1", bin / "quenlet-agent"});
  for (int times = 1; times <= 3; ++times) {
    ASSERT_TRUE(eventually([&] {
      const auto words = happened();
      return agent->says("didReportAnalytics") &&
             std::count(words.begin(), words.end(), "Discovery completed") == times;
    }));
    agent->signal(times < 3 ? SIGHUP : SIGTERM);
  }
  EXPECT_EQ(agent->wait(), 0);
  EXPECT_TRUE(std::filesystem::is_empty(temporary / "quenlet/notifications"));

  std::vector<std::string> words = happened();
  // Follows the owner's card on the main thread, beside the restore.
  EXPECT_EQ(
      std::erase_if(words, [](const auto& word) { return word.starts_with("contactsChanged"); }),
      2U);
  const std::vector<std::string> discovery = {
      "Discovering all extensions", "Discovered extensions: donor extension com.example.donor",
      "Discovery completed"};
  std::vector<std::string> expected = {"agentWillStart",
                                       "beginRestorePersistedState",
                                       "endRestorePersistedState",
                                       "featureWillEnable",
                                       "featureDidEnable",
                                       "willLoadExtensionVersions",
                                       "willSaveExtensionVersions",
                                       "willReportAnalytics",
                                       "agentWillHandleRequest:",
                                       "didReportAnalytics",
                                       "agentDidHandleRequest:"};
  expected.insert(expected.end() - 4, discovery.begin(), discovery.end());
  for (int times = 0; times < 2; ++times) {
    expected.push_back("Hup hup hup!!");
    expected.insert(expected.end(), discovery.begin(), discovery.end());
  }
  expected.push_back("agentWillStop");
  EXPECT_EQ(words, expected);
}

TEST_F(AgentLifeTest, ReportsOnceADayFiveSecondsAfterALaunch) {
  writeFile(ownersCard, cardText("Anna Berg", {"EMAIL:anna@example.org", "TEL:+49 30 1234567"}));

  const std::filesystem::path counters = home / "Library/Logs/quenlet/counters.prom";
  std::string counted;
  setNumbers({"+49 30 7654321"});
  for (const int deviceClass : {2, 1}) {
    setDeviceClass(deviceClass);
    const auto launch = std::chrono::steady_clock::now();
    startAgent();
    EXPECT_EQ(
        donate("com.example.mail", "Anna Berg", {"TEL:030 1234567", "TEL:+49 89 7654321"}).code, 0);

    ASSERT_TRUE(eventually([this] { return agent->says("didReportAnalytics"); }));
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - launch;
    EXPECT_THAT(passed.count(), testing::AllOf(testing::Ge(5), testing::Le(20))) << deviceClass;
    const bool isFirst = counted.empty();

    EXPECT_EQ(agent->says("withinReportingInterval:"), !isFirst);
    EXPECT_EQ(cardHas("7654321  device"), !isFirst) << "SIM cards are a phone's";
    EXPECT_EQ(stopAgent(), 0);
    if (isFirst) counted = readFile(counters);
  }
  EXPECT_EQ(readFile(counters), counted);

  EXPECT_THAT(quenlet({"stats"}).out,
              testing::AllOf(HasSubstr("\n  a name            yes\n"),
                             HasSubstr("\n  postal addresses  no\n"),
                             HasSubstr("\n  phone numbers     1.0                1.0  1\n")));
}

}  // namespace
}  // namespace quenlet
