#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using namespace testing;

class AgentLifeTest : public ProcessTest {
 protected:
  // What it printed and its events' names; without the owner's card, which goes on beside the rest.
  [[nodiscard]] std::string happened() const {
    std::string text;
    std::istringstream lines(agent->out());
    for (std::string line; std::getline(lines, line);) {
      const auto event = line.find("\"event\":\"") + 9;
      if (line.starts_with('{')) line = line.substr(event, line.find('"', event) - event);
      if (!line.starts_with("contactsChanged")) text += line + "\n";
    }
    return text;
  }
  // The program with a standard output that nobody reads.
  Ran unread(const std::string& word) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe(ends), 0);
    ::close(ends[0]);
    const std::string command = "exec \"$0\" " + word + " >&" + std::to_string(ends[1]);
    Ran ran = run({"/bin/sh", "-c", command, bin / "quenlet"});
    ::close(ends[1]);
    return ran;
  }
};

TEST_F(AgentLifeTest, GivesWayToAnAgentThatRuns) {
  startAgent();
  donate("com.example.mail", "Anna Berg", {});
  const auto written = std::filesystem::last_write_time(donationsFile);
  const Ran second = run({bin / "quenlet-agent"});
  EXPECT_EQ(second.code, 1);
  EXPECT_THAT(second.err, HasSubstr("quenlet-agent: ovaro.quenlet.service-error 10"));
  EXPECT_EQ(std::filesystem::last_write_time(donationsFile), written);

  const Ran elsewhere =
      run({"env", "XDG_RUNTIME_DIR=" + (temporary / "elsewhere").string(), bin / "quenlet-agent"});
  EXPECT_EQ(elsewhere.code, 1);
  EXPECT_THAT(elsewhere.err, HasSubstr("another agent keeps this user's donations"));
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
    EXPECT_THAT(ran.err, StartsWith("quenlet-agent: posix-error 21: " + file.string()));
    EXPECT_THAT(ran.err, Not(HasSubstr("agentWillStart")));
    std::filesystem::remove(file);
  }
  std::filesystem::create_symlink("elsewhere", lock);
  EXPECT_EQ(run({bin / "quenlet-agent"}).code, 75);
  std::filesystem::remove(lock);
  writeFile(temporary / "file", "");
  EXPECT_EQ(
      run({"env", "XDG_RUNTIME_DIR=" + (temporary / "file").string(), bin / "quenlet-agent"}).code,
      75);
  startAgent();
}

TEST_F(AgentLifeTest, PutsNoFileInThePlaceOfClosedStandardDescriptors) {
  startAgent({"/bin/sh", "-c", "exec '" + (bin / "quenlet-agent").native() + "' <&- >&- 2>&-"});
  for (const char* descriptor : {"0", "1", "2"}) {
    EXPECT_EQ(std::filesystem::read_symlink(agent->processDirectory() / "fd" / descriptor),
              "/dev/null");
  }
}

TEST_F(AgentLifeTest, RefusesACopyOfTheClientWhileItServesTheClient) {
  startAgent();
  const std::filesystem::path copy = temporary / "copy";
  std::filesystem::copy_file(bin / "quenlet", copy);

  const Ran refused = run({"/bin/sh", "-c", "echo $$; exec \"$0\" list", copy});
  EXPECT_THAT(
      refused.err,
      MatchesRegex("quenlet: ovaro.general-error 4097: connection to corvel: missing entitlement\n"
                   "hint: the agent looked for the program [^\n]*/copy\n"
                   "hint: /etc/quenlet/entitlements/copy.plist can entitle it[^\n]*\n"
                   "hint: [^\n]*\n"));
  const std::string process = refused.out.substr(0, refused.out.size() - 1);
  EXPECT_TRUE(eventually([&] {
    return agent->says("\"denyingRequestFromProcess:\",\"arguments\":[" + process) &&
           agent->says("\"deniedProcess:executable:\",\"arguments\":[" + process);
  })) << process;
  EXPECT_EQ(quenlet("list").code, 0);
  EXPECT_THAT(readFile(agent->processDirectory() / "limits"), ContainsRegex("core file size +0 "))
      << "values are not to be left in a file of its memory";

  const Ran stranger = run({"unshare", "--user", "--map-current-user", bin / "quenlet", "list"});
  if (stranger.err.starts_with("unshare: ")) GTEST_SKIP() << stranger.err;
  EXPECT_THAT(stranger.err, HasSubstr("missing entitlement")) << "it could name any program";
}

TEST_F(AgentLifeTest, ClientSaysThatThereIsNoAgentAndEndsWhenNobodyReadsIt) {
  EXPECT_EQ(quenlet("card").code, 3);
  EXPECT_EQ(unread("status").code, -SIGPIPE);
  const Ran watch = unread("watch");
  EXPECT_EQ(watch.code, 1);
  const std::string remark =
      "quenlet: ovaro.quenlet.service-error 1: nobody listens under ovaro.quenlet.agent\n"
      "hint: no agent runs; start it: systemctl --user start quenlet-agent\n";
  EXPECT_EQ(watch.err,
            remark + "quenlet: posix-error 5: write to standard output: Input/output error\n");
  const Ran left = run({"/bin/sh", "-c", R"({ "$0" watch; echo "ended with $?" >&2; } | head -n 1)",
                        bin / "quenlet"});
  EXPECT_EQ(left.out + left.err, "watching…\n" + remark + "ended with 0\n");
}

TEST_F(AgentLifeTest, DoesEverythingInOrderFromLaunchToTheSecondHangUpAndReportsOnceADay) {
  const std::filesystem::path counters = home / "Library/Logs/quenlet/counters.prom";
  writeOwnersCard(cardText("Anna Berg", {"EMAIL:anna@example.org", "TEL:+49 30 1234567"}));
  installManifest("com.example.old");
  // Nothing is looked for where confined programs may write.
  std::filesystem::create_directories(home / "Library");
  std::filesystem::rename(extensions, home / "Library/Extensions");
  installManifest("com.example.donor");
  const auto passed = [launch = std::chrono::steady_clock::now()] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - launch).count();
  };
  agent = start({"/bin/sh", "-c", "exec \"$0\" 2>&1", bin / "quenlet-agent"});
  ASSERT_TRUE(eventually([this] { return agent->says("willLoadExtensionVersions"); }));
  EXPECT_THAT(passed(), AllOf(Ge(2), Lt(5)));
  const std::string discovery =
      "Discovering all extensions\nDiscovered extensions: donor extension com.example.donor\n"
      "Discovery completed\n";
  std::string expected =
      "agentWillStart\nbeginRestorePersistedState\nendRestorePersistedState\nfeatureWillEnable\n"
      "featureDidEnable\nwillLoadExtensionVersions\nwillSaveExtensionVersions\n" +
      discovery +
      "willReportAnalytics\nagentWillHandleRequest:\ndidReportAnalytics\n"
      "agentDidHandleRequest:\n";
  ASSERT_TRUE(eventually([&] { return happened() == expected; })) << happened();
  EXPECT_THAT(passed(), AllOf(Ge(5), Le(20)));
  for (int times = 0; times < 2; ++times) {
    agent->signal(SIGHUP);
    expected += "Hup hup hup!!\n" + discovery;
    ASSERT_TRUE(eventually([&] { return happened() == expected; })) << happened();
  }
  EXPECT_EQ(stopAgent(), 0);
  EXPECT_EQ(happened(), expected + "agentWillStop\n");
  EXPECT_TRUE(std::filesystem::is_empty(temporary / "quenlet/notifications"));

  const std::string counted = readFile(counters);
  startAgent();
  donate("com.example.mail", "Anna Berg", {"TEL:+49 89 7654321"});
  ASSERT_TRUE(eventually([this] { return agent->says("didReportAnalytics"); }));
  EXPECT_TRUE(agent->says("withinReportingInterval:"));
  EXPECT_EQ(stopAgent(), 0);
  EXPECT_EQ(readFile(counters), counted);
  EXPECT_THAT(quenlet("stats").out, AllOf(HasSubstr("\n  a name            yes\n"),
                                          HasSubstr("\n  postal addresses  no\n")));
}

}  // namespace
}  // namespace quenlet
