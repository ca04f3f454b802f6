#include "sources/accounts/AccountChangeAnalyzer.h"

#include "sources/accounts/AccountPropertyParser.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/TestEnvironment.h"

namespace quenlet {
namespace {

class AccountChangeAnalyzerTest : public EnvironmentTest {
 protected:
  // An account of the present store.
  AccountPtr account(Account fields, const std::string& type = "") {
    fields.identifier = "A1";
    fields.accountStore = accountStore;
    if (fields.properties.empty()) fields.properties = {{"firstName", "Ann"}};
    if (!type.empty()) fields.accountType = AccountType{type};
    return std::make_shared<const Account>(std::move(fields));
  }
  // What is asked of the store, then what is printed.
  std::string effectOf(const AccountPtr& from, const AccountPtr& to,
                       const std::shared_ptr<CorvelProtocol>& asked) {
    AccountChangeAnalyzer analyzer(from, to, asked, environment->loggers->accountLogger());
    testing::internal::CaptureStdout();
    analyzer.collectRemovals();
    analyzer.collectDonations();
    analyzer.keepReDonatedIdentifiers();
    analyzer.applyChanges();
    for (const auto& value : analyzer.donations) {
      EXPECT_EQ(value->origin().expirationDate,
                environment->schedulers.now().addingSeconds(7776000));
    }
    return store->takeCalls() + testing::internal::GetCapturedStdout();
  }

  std::shared_ptr<AccountStore> accountStore = environment->accounts;
  const std::shared_ptr<RecordingAgent> store = std::make_shared<RecordingAgent>();
};

TEST_F(AccountChangeAnalyzerTest, DonatesRelevantAccountsAndRemovesTheRest) {
  const AccountPtr both = account({.username = "a@x.org", .enabledDataclasses = {"mail"}});
  const AccountPtr nameOnly = account({.enabledDataclasses = {"mail"}});
  const AccountPtr unused = account({.isActive = true});
  const auto smtp =
      account({.isActive = true, .enabledDataclasses = {"mail"}}, "ovaro.account.SMTP");
  const auto active = account({.isActive = true}, "ovaro.account.MelodaStore");
  const auto off = account({.enabledDataclasses = {"mail"}}, "ovaro.account.MelodaStore");
  const std::string removal = "removeIdentifiers name:A1 email:A1;";
  const std::tuple<AccountPtr, AccountPtr, std::string> cases[] = {
      {nullptr, nullptr, ""},         {nullptr, both, "donate 2;"},
      {both, both, "donate 2;"},      {both, nameOnly, "donate 1;removeIdentifiers email:A1;"},
      {nameOnly, nullptr, removal},   {both, smtp, removal},
      {nullptr, active, "donate 1;"}, {active, off, removal},
      {nullptr, unused, ""},
  };
  for (const auto& [from, to, effect] : cases) EXPECT_EQ(effectOf(from, to, store), effect);
  EXPECT_EQ(effectOf(both, both, nullptr), "") << "without a store";
  accountStore = std::make_shared<FakeAccountStore>();
  const AccountPtr orphan = account({.username = "a@x.org"}, "ovaro.account.IMAP");
  accountStore.reset();
  EXPECT_EQ(
      effectOf(nullptr, orphan, store),
      "Dead accountStore on account object! Ignoring account A1 of type ovaro.account.IMAP\n");
  static_cast<void>(takeTrace());
  store->error = makeError("domain", 7);
  static_cast<void>(effectOf(both, nameOnly, store));
  const Events events = takeTrace();
  ASSERT_EQ(events.size(), 2u);
  EXPECT_NE(events[0].find("donationFailedWithError:"), std::string::npos);
  EXPECT_NE(events[1].find("removalFailedWithError:"), std::string::npos);
}

}  // namespace
}  // namespace quenlet
