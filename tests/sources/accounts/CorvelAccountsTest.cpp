#include "tests/core/AgentFixture.h"
#include "tests/support/RecordingAgent.h"

namespace quenlet {
namespace {

class CorvelAccountsTest : public AgentFixture {
 protected:
  static AccountPtr account(const std::string& address, const std::string& firstName = "",
                            const std::string& identifier = "A1") {
    Account account{.identifier = identifier, .username = address, .enabledDataclasses = {"mail"}};
    if (!firstName.empty()) account.properties.emplace("firstName", firstName);
    return std::make_shared<const Account>(std::move(account));
  }
  Events eventsSoFar() {
    Events events = AgentFixture::eventsSoFar();
    std::erase_if(events, [](const std::string& event) {
      return event.find("HandleRequest") != event.npos || event.find("accepting") != event.npos;
    });
    return events;
  }
  Events eventsOfChange(const AccountPtr& from, const AccountPtr& to) {
    agent->changeFromAccount(from, to, [this](const ErrorPtr& error) {
      noteReply(error ? error->description() + std::string(error->userInfo().size(), '!') : "");
    });
    return eventsSoFar();
  }
  Events eventsOfReload() {
    agent->reloadAllAccounts();
    return eventsSoFar();
  }

  const std::string reply = "caller: reply ";
  const std::string donating = "caller: donating: ";
  const std::string removing = "caller: removing: ";
};

TEST_F(CorvelAccountsTest, FollowsTheChangesOfAnAccount) {
  setEnabled(true);
  const AccountPtr both = account("a@x.org", "Ann");
  const AccountPtr nameOnly = account("nobody", "Ann");
  const AccountPtr another = account("b@x.org", "", "A2");
  EXPECT_EQ(eventsOfChange(nullptr, nullptr), Events{reply});
  EXPECT_EQ(eventsOfChange(nullptr, both),
            (Events{"caller: accountAdded: account A1", donating + "name:A1", donating + "email:A1",
                    reply, posted, "io: store name:A1 email:A1"}));
  EXPECT_EQ(eventsOfChange(both, nameOnly),
            (Events{"caller: accountChanged: account A1", donating + "name:A1",
                    removing + "email:A1", reply, posted, posted, "io: store name:A1"}));
  EXPECT_EQ(
      eventsOfChange(nameOnly, another),
      (Events{"caller: accountChanged: account A2", donating + "email:A2", removing + "name:A1",
              removing + "email:A1", reply, posted, posted, "io: store email:A2"}));
  EXPECT_EQ(eventsOfChange(another, nullptr),
            (Events{"caller: accountRemoved: account A2", removing + "name:A2",
                    removing + "email:A2", reply, posted, "io: store "}));
}

TEST_F(CorvelAccountsTest, RefusesChangesWhileDonationsAreOffAndNotBefore) {
  const AccountPtr added = account("a@x.org");
  const Events taken = {"caller: accountAdded: account A1", donating + "email:A1", reply, posted,
                        "io: store email:A1"};
  EXPECT_EQ(eventsOfChange(nullptr, added), taken) << "nobody has decided yet";
  setEnabled(false);
  EXPECT_EQ(eventsOfChange(nullptr, added),
            (Events{taken.front(),
                    "caller: featureNotEnabled: changeFromAccount:toAccount:completionHandler:",
                    reply + "ovaro.quenlet.donation-error 1"}));
  environment->donors.failure = makeError("discovery", 3);
  setEnabled(true);
  EXPECT_EQ(eventsOfChange(nullptr, added), taken) << "on, with a discovery that failed";
}

TEST_F(CorvelAccountsTest, SendsEverythingToTheReceiverThatIsSet) {
  const auto receiver = std::make_shared<RecordingAgent>();
  receiver->setError(makeError("receiver", 3));
  agent->accountDonationReceiver = receiver;
  hold({email("old@x.org", from(AccountsBundleIdentifier, "email:A0"))});
  eventsOfChange(account("a@x.org", "Ann"), account("nobody", "Ann"));
  EXPECT_EQ(receiver->takeCalls(), "donate 1;removeIdentifiers email:A1;");
  environment->accounts->held = {account("a@x.org", "Ann"), account("b@x.org", "", "A2")};
  EXPECT_EQ(eventsOfReload(),
            (Events{donating + "name:A1", donating + "email:A1", donating + "email:A2",
                    "caller: willSaveExtensionVersions", posted, "io: store "}));
  EXPECT_EQ(receiver->takeCalls(), "donate 2;donate 1;");
}

TEST_F(CorvelAccountsTest, ReloadsAllAccountsAndSavesWhatIsLeft) {
  const std::string saving = "caller: willSaveExtensionVersions";
  const std::string noted = "caller: store versions other=9 ovaro.quenlet.accounts=3";
  hold({email("old@x.org", from(AccountsBundleIdentifier, "email:A0")),
        email("b@x.org", from("app", "b"))});
  environment->accounts->error = makeError("disk", 5);
  EXPECT_EQ(eventsOfReload(), Events{}) << "a store that cannot be listed costs nothing";
  EXPECT_EQ(replyTo(CorvelSelector::list), "list email:A0 b");

  environment->accounts->error = nullptr;
  const Account unused{.identifier = "A4", .username = "d@x.org"};
  environment->accounts->held = {account("a@x.org"), account("nobody", "", "A2"),
                                 account("c@x.org", "", "A3"),
                                 std::make_shared<const Account>(unused)};
  // What is told while it reads makes it read no second time.
  environment->accounts->whenRead = [this] {
    agent->changeFromAccount(nullptr, nullptr, [](const ErrorPtr&) {});
  };
  testing::internal::CaptureStdout();
  EXPECT_EQ(eventsOfReload(), (Events{donating + "email:A1", donating + "email:A3", saving, posted,
                                      posted, "io: store b email:A1 email:A3"}));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "the store lives as long as they do";

  persistence->versions = {{AccountsBundleIdentifier, 2}, {"other", 9}};
  agent->loadExtensionVersions();
  takeTrace();
  environment->accounts->held.clear();
  EXPECT_EQ(eventsOfReload(), (Events{saving, noted, posted, "io: store b"})) << "some are dropped";
  EXPECT_EQ(eventsOfReload(), (Events{saving, noted})) << "none is dropped";
  EXPECT_EQ(replyTo(CorvelSelector::fetch), "card b@x.org");
}

}  // namespace
}  // namespace quenlet
