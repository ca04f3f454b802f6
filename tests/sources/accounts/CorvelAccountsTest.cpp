#include "tests/core/AgentFixture.h"

namespace quenlet {
namespace {

class CorvelAccountsTest : public AgentFixture {
 protected:
  static AccountPtr account(const std::string& address, const std::string& firstName = "") {
    Account account{.identifier = "A1", .username = address, .enabledDataclasses = {"mail"}};
    if (!firstName.empty()) account.properties.emplace("firstName", firstName);
    return std::make_shared<const Account>(std::move(account));
  }
  Events eventsOfChange(const AccountPtr& from, const AccountPtr& to) {
    agent->changeFromAccount(from, to, errorReply());
    run();
    Events events = takeTrace();
    std::erase_if(events, [](const std::string& event) {
      return event.find("HandleRequest") != event.npos || event.find("accepting") != event.npos;
    });
    return events;
  }
};

TEST_F(CorvelAccountsTest, FollowsTheChangesOfAnAccount) {
  setEnabled(true);
  static_cast<void>(takeTrace());
  const AccountPtr both = account("a@x.org", "Ann");
  const AccountPtr nameOnly = account("nobody", "Ann");
  const std::string name = "caller: donating: name:A1";
  const std::string reply = "caller: reply no error";
  EXPECT_EQ(eventsOfChange(nullptr, nullptr), Events{reply});
  EXPECT_EQ(eventsOfChange(nullptr, both),
            (Events{"caller: accountAdded: account A1", name, "caller: donating: email:A1", reply,
                    posted, "io: store name:A1 email:A1"}));
  EXPECT_EQ(eventsOfChange(both, nameOnly),
            (Events{"caller: accountChanged: account A1", name, "caller: removing: email:A1", reply,
                    posted, posted, "io: store name:A1 email:A1", "io: store name:A1"}));
  EXPECT_EQ(eventsOfChange(nameOnly, nullptr),
            (Events{"caller: accountRemoved: account A1", "caller: removing: name:A1",
                    "caller: removing: email:A1", reply, posted, "io: store "}));
  setEnabled(false);
  static_cast<void>(takeTrace());
  EXPECT_EQ(eventsOfChange(nullptr, both),
            (Events{"caller: accountAdded: account A1",
                    "caller: featureNotEnabled: changeFromAccount:toAccount:completionHandler:",
                    "caller: reply error 1"}));
}

TEST_F(CorvelAccountsTest, ReloadsAllAccountsAndSavesWhatIsLeft) {
  hold({email("old@x.org", from(AccountsBundleIdentifier, "email:gone")),
        email("b@x.org", from("app", "b"))});
  environment->accounts->held = {account("a@x.org")};
  agent->reloadAllAccounts();
  run();
  EXPECT_EQ(identifiersOf(persistence->kept), "b email:A1");
  environment->accounts->held.clear();
  for (int round = 0; round < 2; ++round) {
    static_cast<void>(takeTrace());
    agent->reloadAllAccounts();
    run();
    const Events saved = {"caller: willSaveExtensionVersions", posted, "io: store b"};
    EXPECT_EQ(takeTrace(), round == 0 ? saved : Events{saved.front()})
        << "once, when any is dropped";
  }
  EXPECT_EQ(replyTo(CorvelSelector::fetch), "card b@x.org");
}

TEST_F(CorvelAccountsTest, KeepsWhatItHasWhenTheStoreCannotBeRead) {
  hold({email("a@x.org", from(AccountsBundleIdentifier, "email:A1"))});
  environment->accounts->error = makeError("disk", 5);
  agent->reloadAllAccounts();
  run();
  EXPECT_EQ(takeTrace(), Events{});
  EXPECT_EQ(replyTo(CorvelSelector::list), "list email:A1");
}

TEST_F(CorvelAccountsTest, ReadsOnceMoreWhenAnAccountChangesDuringTheReload) {
  setEnabled(true);
  environment->accounts->held = {account("a@x.org")};
  environment->accounts->whenRead = [this] {
    environment->accounts->whenRead = nullptr;
    environment->accounts->held.clear();
    agent->changeFromAccount(account("a@x.org"), nullptr, [](const ErrorPtr&) {});
  };
  agent->reloadAllAccounts();
  run();
  EXPECT_EQ(replyTo(CorvelSelector::list), "list ") << "the list was read before the change";
}

}  // namespace
}  // namespace quenlet
