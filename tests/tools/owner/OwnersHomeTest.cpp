#include "tools/owner/OwnersHome.h"

#include <gmock/gmock.h>

#include "platform/feedback/FeedbackFile.h"
#include "platform/ipc/ServiceInterface.h"
#include "tests/support/KeepingAgent.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

class OwnersHomeTest : public testing::Test {
 protected:
  // Puts `backup` in place and gives its counts, or the error.
  std::string import(const Backup& backup) {
    const OwnersHome owner = OwnersHome::open(agent, Date(100)).takeValue();
    const auto outcome = owner.restore(backup);
    if (!outcome.ok()) return outcome.error()->debugDescription();
    const OwnersHome::Imported& imported = outcome.value();
    return std::to_string(imported.donations) + " donations, " + std::to_string(imported.expired) +
           " expired, " + std::to_string(imported.accounts) + " accounts";
  }

  const TemporaryHome home;
  KeepingAgent agent;
};

TEST_F(OwnersHomeTest, SendsMuchInPartsAndGoesOnAfterARefusal) {
  Backup backup;
  for (const char* identifier : {"a", "b", "c"}) {
    const std::string picture(std::size_t{8} << 20, 'x');
    backup.donations.push_back(image(picture, from("app", identifier)));
  }
  agent.failing = 3;  // the list, a part, the next part
  agent.failure = makeServiceError(ServiceErrorCode::timedOut, "silent");
  EXPECT_EQ(import(backup), "2 of 3 donations are in place, then it failed: silent");
  EXPECT_EQ(import(backup), "3 donations, 0 expired, 0 accounts");
  EXPECT_EQ(agent.requests, "2 1 1 ");
  EXPECT_EQ(identifiersOf(agent.held), "a b c");
}

TEST_F(OwnersHomeTest, LeavesOutWhatHasExpiredSince) {
  agent.held = {email("new@example.org", from("app", "b"))};
  const Backup backup{.donations = {email("a@example.org", from("app", "a", {}, Date(101))),
                                    email("b@example.org", from("app", "b", {}, Date(100)))}};
  EXPECT_TRUE(OwnersHome::open(agent, Date(100)).value().conflicts(backup).value().empty());
  EXPECT_EQ(import(backup), "1 donations, 1 expired, 0 accounts");
  EXPECT_EQ(identifiersOf(agent.held), "b a");
}

TEST_F(OwnersHomeTest, TellsTheAgentOfAccountsThatChangeBeforeItBringsBackTheirDonations) {
  const auto account = [](const char* identifier) {
    return Account{.identifier = identifier, .username = "ann", .isActive = true};
  };
  const auto store = std::move(UserAccounts::open()).takeValue();
  ASSERT_FALSE(store->store().save(account("same")));
  home.write("Library/Accounts/damaged.plist", "damaged");
  const Backup backup{
      .donations = {email("b", from("app", "b")), email("ann", from("accounts", "new"))},
      .accounts = {account("damaged"), account("new"), account("same")}};
  agent.failing = 5;  // list, donations, list, the damaged account, the new one
  agent.failure = makeServiceError(ServiceErrorCode::timedOut, "silent");
  EXPECT_EQ(import(backup), "silent");
  EXPECT_FALSE(store->store().accountWithIdentifier("new").ok()) << "to be told again";
  agent.held.clear();
  agent.requests.clear();
  EXPECT_EQ(import(backup), "2 donations, 0 expired, 1 accounts");
  EXPECT_EQ(agent.requests, "2 add new 1 1 ");
  EXPECT_TRUE(*agent.held.at(1) == *backup.donations[1]) << "with its own dates, in its place";
  EXPECT_EQ(*store->store().accountWithIdentifier("damaged").value(), backup.accounts[0]);
}

TEST_F(OwnersHomeTest, NamesFeedbackThatIsNoListAndKeepsACopyOfIt) {
  const PropertyListArray decisions{PropertyListDictionary{{"status", "rejected"}}};
  const std::string former = "<plist version=\"1.0\"><dict><key>me</key><true/></dict></plist>";
  home.write(FeedbackPath, former);
  const Backup backup{.feedback = {{"me", decisions}}};
  const OwnersHome owner = OwnersHome::open(agent, Date(100)).takeValue();
  EXPECT_THAT(owner.conflicts(backup).value(),
              testing::ElementsAre("the decisions on the contact me"));
  EXPECT_EQ(owner.restore(backup).value().decisions, 1U);
  EXPECT_EQ(owner.backUp().value().feedback, backup.feedback);
  EXPECT_EQ(home.read(FeedbackPath + std::string(".damaged-1")), former);
}

}  // namespace
}  // namespace quenlet
