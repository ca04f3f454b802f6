#include <gmock/gmock.h>
#include <signal.h>

#include <regex>

#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class AgentLifeTest : public ProcessTest {
 protected:
  const std::vector<std::string> donatedCard = {"EMAIL:anna@example.org"};

  // The names of the log's events, in order.
  std::vector<std::string> events() const {
    static const std::regex name("\"event\":\"([^\"]*)\"");
    const std::string lines = log();
    std::vector<std::string> names;
    for (std::sregex_iterator found(lines.begin(), lines.end(), name), end; found != end; ++found) {
      names.push_back((*found)[1]);
    }
    return names;
  }
  // Those of them that `wanted` names.
  std::vector<std::string> events(const std::vector<std::string>& wanted) const {
    std::vector<std::string> names = events();
    std::erase_if(names, [&](const std::string& name) {
      return std::find(wanted.begin(), wanted.end(), name) == wanted.end();
    });
    return names;
  }
};

TEST_F(AgentLifeTest, LogsItsEventsInOrderAndNoValues) {
  startAgent();
  const std::vector<std::string> launch = {"agentWillStart", "beginRestorePersistedState",
                                           "endRestorePersistedState", "featureWillEnable"};
  EXPECT_EQ(events(launch), launch);

  const std::size_t before = events().size();
  EXPECT_EQ(donate("com.example.mail", "Anna Berg", donatedCard).code, 0);
  ASSERT_TRUE(eventually([&] { return events().back() == "agentDidHandleRequest:"; }));
  std::vector<std::string> request = events();
  request.erase(request.begin(), request.begin() + static_cast<std::ptrdiff_t>(before));
  EXPECT_THAT(request,
              testing::ElementsAre("acceptingConnectionFromProcess:", "agentWillHandleRequest:",
                                   "acceptingDonations:", "agentDidHandleRequest:"));
  EXPECT_EQ(stopAgent(), 0);
  EXPECT_EQ(events().back(), "agentWillStop");
  EXPECT_THAT(log(), AllOf(HasSubstr("com.example.mail:donated.vcf:1:email:1"),
                           Not(HasSubstr("anna@example.org")), Not(HasSubstr("Berg"))));
  EXPECT_EQ(agent->out(), "");
}

TEST_F(AgentLifeTest, GivesWayToAnAgentThatRuns) {
  startAgent();
  EXPECT_EQ(donate("com.example.mail", "Anna Berg", donatedCard).code, 0);
  const auto written = std::filesystem::last_write_time(donationsFile);
  const Ran second = finish(*start({bin / "quenlet-agent"}));
  EXPECT_EQ(second.code, 1);
  EXPECT_THAT(second.err, HasSubstr("quenlet-agent: ovaro.quenlet.service-error 10"));
  EXPECT_EQ(std::filesystem::last_write_time(donationsFile), written);
  EXPECT_EQ(countDonations(), 2);
}

TEST_F(AgentLifeTest, DisablingRefusesAtOnceAndEnablingInTimeLosesNothing) {
  startAgent();
  EXPECT_EQ(donate("com.example.mail", "Anna Berg", donatedCard).code, 0);
  EXPECT_EQ(quenlet({"disable"}).code, 0);
  ASSERT_TRUE(eventually([this] { return quenlet({"card"}).code == 1; }));
  EXPECT_EQ(quenlet({"list"}).err,
            "quenlet: ovaro.quenlet.donation-error 1: donations are not enabled\n");
  EXPECT_THAT(quenlet({"status"}).out, HasSubstr("disabled"));
  EXPECT_EQ(quenlet({"enable"}).code, 0);
  ASSERT_TRUE(eventually([this] { return countDonations() == 2; }));
}

// Takes the 30 seconds that the owner has to change their mind.
TEST_F(AgentLifeTest, DeletesAllDonationsAWhileAfterDisabling) {
  startAgent();
  EXPECT_EQ(donate("com.example.mail", "Anna Berg", donatedCard).code, 0);
  EXPECT_EQ(quenlet({"disable"}).code, 0);
  ASSERT_TRUE(eventually([this] { return !events({"featureDidDisable"}).empty(); }));
  ASSERT_TRUE(eventually(
      [this] { return readFile(donationsFile).find("anna@example.org") == std::string::npos; }));
  EXPECT_EQ(quenlet({"enable"}).code, 0);
  ASSERT_TRUE(eventually([this] { return countDonations() == 0; }));
}

TEST_F(AgentLifeTest, FollowsTheOwnersCardAndTellsWatchers) {
  writeFile(ownersCard, cardText("Anna Berg", {}));
  startAgent();
  EXPECT_EQ(donate("com.example.mail", "Anna Berg", donatedCard).code, 0);
  EXPECT_THAT(card(), HasSubstr("anna@example.org"));
  const auto watcher = start({bin / "quenlet", "watch"});
  ASSERT_TRUE(eventually([&] { return watcher->out() == "watching…\n"; }));

  writeFile(ownersCard, cardText("Anna Berg", donatedCard));
  EXPECT_TRUE(eventually([this] { return card().find("anna@example.org") == std::string::npos; }))
      << "the owner's card has the address now, written in place";
  writeFile(home / "new", cardText("Bertha Maier", {}));
  std::filesystem::rename(home / "new", ownersCard);
  EXPECT_TRUE(eventually([this] { return card() == "The card is empty.\n"; }))
      << "the donor contradicts the name on the card that took the place of the former one";

  const std::string line = "ovaro.quenlet.me-card-values-did-change\n";
  EXPECT_TRUE(eventually([&] { return watcher->out().find(line) != std::string::npos; }));
  watcher->signal(SIGINT);
  EXPECT_EQ(watcher->wait(), 0);
}

TEST_F(AgentLifeTest, FindsAHomeWithoutAUsableVariable) {
  // The database is swapped for the agent alone, in a mount namespace, so that the home of whoever
  // runs the tests stays untouched.
  const std::filesystem::path database = temporary.path() / "passwd";
  const std::filesystem::path databaseHome = temporary.path() / "other" / "home";
  writeFile(database, "owner:x:0:0::" + databaseHome.string() + ":/bin/sh\n");
  const auto startWithDatabase = [&](const std::string& program) {
    return start({"unshare", "--map-root-user", "--mount", "sh", "-c",
                  "mount --bind \"$0\" /etc/passwd && exec \"$1\"", database, program});
  };
  if (finish(*startWithDatabase("true")).code != 0) GTEST_SKIP() << "needs mount namespaces";

  for (const std::optional<std::string>& variable :
       {std::optional<std::string>(), std::optional<std::string>("relative")}) {
    environment["HOME"] = variable;
    std::filesystem::remove_all(databaseHome);
    agent = startWithDatabase(bin / "quenlet-agent");
    // It serves this client, but cannot see from within its namespace which program that is.
    ASSERT_TRUE(eventually([this] { return quenlet({"status"}).code == 0; })) << log();
    EXPECT_TRUE(std::filesystem::exists(databaseHome / "Library"));
    EXPECT_EQ(stopAgent(), 0);
  }
}

TEST_F(AgentLifeTest, CreatesAHomeThatIsNotThereYet) {
  environment["HOME"] = temporary.path() / "missing" / "home";
  startAgent();
  EXPECT_EQ(donate("com.example.mail", "Anna Berg", donatedCard).code, 0);
  EXPECT_TRUE(std::filesystem::exists(temporary.path() / "missing/home/Library"));
}

TEST_F(AgentLifeTest, ClientSaysThatThereIsNoAgentAndWhatIsWrongUsage) {
  for (const char* word : {"card", "list", "clear-rejections"}) {
    const Ran ran = quenlet({word});
    EXPECT_EQ(ran.code, 3) << word;
    EXPECT_THAT(ran.err, testing::StartsWith("quenlet: ovaro.quenlet.service-error 1: ")) << word;
  }
  EXPECT_EQ(quenlet({"status"}).code, 3);
  EXPECT_EQ(quenlet({"disable"}).code, 0) << "needs no agent";
  EXPECT_THAT(quenlet({"status", "--json"}).out,
              testing::StartsWith(R"({"donationsEnabled":false,"agentAnswers":false,)"));
}

}  // namespace
}  // namespace quenlet
