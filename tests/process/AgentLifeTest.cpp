#include <gmock/gmock.h>

#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

class AgentLifeTest : public ProcessTest {
 protected:
  const std::vector<std::string> addressLine = {"EMAIL:anna@example.org"};

  void donateAddress() { EXPECT_EQ(donate("com.example.mail", "Anna Berg", addressLine).code, 0); }
  bool cardHasAddress() { return card().find("anna@example.org") != std::string::npos; }
};

TEST_F(AgentLifeTest, LogsItsEventsInOrderAndNoValues) {
  startAgent();
  donateAddress();
  EXPECT_EQ(stopAgent(), 0);
  EXPECT_THAT(
      agent->err(),
      AllOf(ContainsRegex("agentWillStart.*beginRestorePersistedState.*"
                          "endRestorePersistedState.*acceptingConnectionFromProcess:.*"
                          "agentWillHandleRequest:.*acceptingDonations:.*"
                          "agentDidHandleRequest:.*agentWillStop"),
            HasSubstr("featureWillEnable"), HasSubstr("com.example.mail:donated.vcf:1:email:1"),
            Not(HasSubstr("anna@example.org")), Not(HasSubstr("Berg"))));
  EXPECT_THAT(agent->out(), Not(HasSubstr("anna@example.org")));
}

TEST_F(AgentLifeTest, GivesWayToAnAgentThatRuns) {
  startAgent();
  donateAddress();
  const auto written = std::filesystem::last_write_time(donationsFile);
  const Ran second = finish(*start({bin / "quenlet-agent"}));
  EXPECT_EQ(second.code, 1);
  EXPECT_THAT(second.err, HasSubstr("quenlet-agent: ovaro.quenlet.service-error 10"));
  EXPECT_EQ(std::filesystem::last_write_time(donationsFile), written);
}

// Takes the 30 seconds that the owner has to change their mind.
TEST_F(AgentLifeTest, RefusesWhileDisabledAndDeletesAllDonationsAWhileLater) {
  startAgent();
  donateAddress();
  EXPECT_EQ(quenlet({"disable"}).code, 0);
  ASSERT_TRUE(eventually([this] { return quenlet({"card"}).code == 1; }));
  EXPECT_EQ(quenlet({"list"}).err,
            "quenlet: ovaro.quenlet.donation-error 1: donations are not enabled\n");
  EXPECT_EQ(quenlet({"enable"}).code, 0);
  ASSERT_TRUE(eventually([this] { return countDonations() == 2; })) << "enabled in time";

  EXPECT_EQ(quenlet({"disable"}).code, 0);
  ASSERT_TRUE(eventually(
      [this] { return readFile(donationsFile).find("anna@example.org") == std::string::npos; }));
  EXPECT_EQ(quenlet({"enable"}).code, 0);
  ASSERT_TRUE(eventually([this] { return countDonations() == 0; }));
}

TEST_F(AgentLifeTest, FollowsTheOwnersCardAndTellsWatchers) {
  writeFile(ownersCard, cardText("Anna Berg", {}));
  startAgent();
  donateAddress();
  EXPECT_TRUE(cardHasAddress());
  const auto watcher = start({bin / "quenlet", "watch"});
  ASSERT_TRUE(eventually([&] { return watcher->out() == "watching…\n"; }));

  writeFile(ownersCard, cardText("Anna Berg", addressLine));
  EXPECT_TRUE(eventually([this] { return !cardHasAddress(); }))
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

TEST_F(AgentLifeTest, ClientSaysThatThereIsNoAgentAndDisablesWithoutOne) {
  EXPECT_EQ(quenlet({"card"}).code, 3);
  EXPECT_EQ(quenlet({"disable"}).code, 0);
  const Ran status = quenlet({"status", "--json"});
  EXPECT_EQ(status.code, 3);
  EXPECT_THAT(status.out, HasSubstr(R"({"donationsEnabled":false,"agentAnswers":false,)"));
}

}  // namespace
}  // namespace quenlet
