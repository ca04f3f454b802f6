#include "tools/commands/OnlineAccountsSync.h"

#include <gmock/gmock.h>

#include "model/DonationError.h"
#include "platform/ipc/ServiceInterface.h"
#include "tests/platform/extensions/DonorScript.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

using testing::HasSubstr;

class OnlineAccountsSyncTest : public testing::Test {
 protected:
  OnlineAccountsSyncTest() {
    present({"a", "b"});
    EXPECT_EQ(sync(), "0 account - gnome-a;account - gnome-b;");
  }

  // GNOME's accounts from now on: "a", or "a=address".
  void present(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
      const std::string address = name.size() > 2 ? name.substr(2) : name + "@example.org";
      text += "[Account " + name.substr(0, 1) +
              "]\nProvider=imap_smtp\nIdentity=x\nPresentationIdentity=x\nEnabled=true\n"
              "EmailAddress=" +
              address + "\nName=Ann Berg\n";
    }
    home.write(".config/goa-1.0/accounts.conf", text);
  }
  // The exit code, and what the agent was told.
  std::string sync(ExitCode (OnlineAccountsSync::*operation)() = &OnlineAccountsSync::run) {
    out.str("");
    err.str("");
    Session session{out, err, agent, Date(1767225600), [](std::chrono::milliseconds) {}};
    OnlineAccountsSync syncing(session, *accounts);
    const ExitCode code = (syncing.*operation)();
    return std::to_string(static_cast<int>(code)) + " " + agent.takeCalls();
  }
  // "identifier address " of each account in the store.
  std::string stored() {
    std::string text;
    const auto all = accounts->store().accounts();
    for (const AccountPtr& account : all.value()) {
      text += account->identifier + " " + account->username.value_or("-") + " ";
    }
    return text;
  }

  const TemporaryHome home;
  RecordingAgent agent;
  std::ostringstream out;
  std::ostringstream err;
  const std::unique_ptr<UserAccounts> accounts = UserAccounts::open().takeValue();
};

TEST_F(OnlineAccountsSyncTest, FollowsWhatComesChangesAndGoesAndTouchesNoOthers) {
  EXPECT_EQ(sync(), "0 ");
  EXPECT_THAT(out.str(), HasSubstr("have not changed"));
  // By the identifier alone, or the type alone, they are not GNOME's.
  const auto own = [&](const char* identifier, const char* type) {
    const Account account{identifier, AccountType{type}, "own@example.org"};
    EXPECT_EQ(accounts->store().save(account), nullptr);
  };
  own("gnome-own", "ovaro.account.IMAP");
  own("own", "org.gnome.OnlineAccounts.google");
  present({"a=new@example.org", "c"});
  EXPECT_EQ(sync(), "0 account gnome-a gnome-a;account - gnome-c;account gnome-b -;");
  EXPECT_EQ(out.str(), "Accounts of GNOME: 1 added, 1 changed, 1 removed.\n");
  const std::string others = "gnome-own own@example.org own own@example.org ";
  EXPECT_EQ(stored(), "gnome-a new@example.org gnome-c c@example.org " + others);

  own("gnome-d", "ovaro.account.IMAP");
  present({"c", "d"});
  EXPECT_EQ(sync(), "1 account gnome-a -;");
  EXPECT_THAT(err.str(), HasSubstr("gnome-d is not one of GNOME's"));
  EXPECT_EQ(stored(), "gnome-c c@example.org gnome-d own@example.org " + others);
}

TEST_F(OnlineAccountsSyncTest, LosesNothingToAFileThatIsDamagedOrADirectoryThatIsGone) {
  const std::string before = stored();
  home.write(".config/goa-1.0/accounts.conf", "[Account a]\nProvi");
  EXPECT_EQ(sync(), "1 ");
  EXPECT_THAT(err.str(), HasSubstr("stay as they are"));
  std::filesystem::remove_all(home / ".config/goa-1.0");
  EXPECT_EQ(sync(), "0 ");
  EXPECT_THAT(out.str(), HasSubstr("2 accounts of it stay"));
  EXPECT_EQ(stored(), before);
  std::filesystem::create_directory(home / ".config/goa-1.0");
  EXPECT_EQ(sync(), "0 account gnome-a -;account gnome-b -;");
  std::filesystem::remove(home / ".config/goa-1.0");
  EXPECT_EQ(sync(), "0 ");
  EXPECT_EQ(out.str(), "GNOME keeps no accounts here.\n");
}

TEST_F(OnlineAccountsSyncTest, WritesDamagedFilesAnewOrRemovesThemAndKeepsACopy) {
  for (const char* name : {"gnome-a", "gnome-b", "own"}) {
    home.write("Library/Accounts/" + std::string(name) + ".plist", "damaged");
  }
  home.write("Library/Accounts/gnome-link.plist/file", "not a file: this says nothing of damage");
  present({"a"});
  EXPECT_EQ(sync(), "0 account gnome-a gnome-a;account gnome-b -;");
  EXPECT_EQ(out.str(), "Accounts of GNOME: 0 added, 1 changed, 1 removed.\n");
  EXPECT_THAT(err.str(), testing::AllOf(HasSubstr("gnome-a is damaged"), HasSubstr("anew"),
                                        HasSubstr("gnome-b is damaged"), HasSubstr("removed")));
  EXPECT_EQ(stored(), "gnome-a a@example.org ");
  const std::string directory = "Library/Accounts/";
  EXPECT_EQ(home.read(directory + "gnome-a.plist.damaged-1"), "damaged");
  EXPECT_EQ(home.read(directory + "gnome-b.plist.damaged-1"), "damaged");
  EXPECT_EQ(home.read(directory + "own.plist"), "damaged");
  EXPECT_FALSE(std::filesystem::exists(home / (directory + "gnome-b.plist")));
  EXPECT_EQ(sync(), "0 ");
}

TEST_F(OnlineAccountsSyncTest, WithdrawsAllOfThemAndNoOthers) {
  EXPECT_EQ(accounts->store().save({.identifier = "own"}), nullptr);
  EXPECT_EQ(sync(&OnlineAccountsSync::withdraw), "0 account gnome-a -;account gnome-b -;");
  EXPECT_EQ(stored(), "own - ");
}

TEST_F(OnlineAccountsSyncTest, TellsLaterWhatTheAgentCouldNotBeToldOf) {
  present({"a=new@example.org", "c"});
  agent.setError(makeServiceError(ServiceErrorCode::timedOut, "silent"));
  EXPECT_EQ(sync(), "3 account gnome-a gnome-a;");
  EXPECT_EQ(stored(), "gnome-a new@example.org gnome-c c@example.org ");
  EXPECT_EQ(sync(), "3 account gnome-a gnome-a;");
  EXPECT_EQ(sync(&OnlineAccountsSync::withdraw), "3 account gnome-a gnome-a;");
  EXPECT_THAT(err.str(), HasSubstr("stay until the agent can be told"));
  agent.setError(nullptr);
  // Whatever GNOME's file says meanwhile.
  home.write(".config/goa-1.0/accounts.conf", "[Account a]\nProvi");
  EXPECT_EQ(sync(), "1 account gnome-a gnome-a;account gnome-c gnome-c;account gnome-b -;");
  present({"a=new@example.org", "c"});
  EXPECT_EQ(sync(), "0 ");

  // In these cases the agent reads all accounts, once it runs or donations come on.
  present({"a", "d"});
  agent.setError(makeDonationError(DonationErrorCode::featureNotEnabled, ""));
  EXPECT_EQ(sync(), "0 account gnome-a gnome-a;");
  EXPECT_EQ(stored(), "gnome-a a@example.org gnome-d d@example.org ");
  present({"d"});
  agent.setError(makeServiceError(ServiceErrorCode::noService, "nobody"));
  EXPECT_EQ(sync(), "0 account gnome-a -;");
  EXPECT_THAT(out.str(), HasSubstr("the next one reads them"));
  agent.setError(nullptr);
  EXPECT_EQ(sync(), "0 ");
}

TEST_F(OnlineAccountsSyncTest, TellsOfWhatAnEarlierSyncWroteBeforeItWasCutShort) {
  // A directory in the place of a file stops it between two accounts.
  home.write("Library/Accounts/gnome-c.plist/file", "");
  present({"a=new@example.org", "b", "c"});
  EXPECT_EQ(sync(), "1 ");
  EXPECT_THAT(err.str(), HasSubstr("in part"));
  std::filesystem::remove_all(home / "Library/Accounts/gnome-c.plist");
  EXPECT_EQ(sync(), "0 account gnome-a gnome-a;account gnome-c -;account - gnome-c;");
  EXPECT_EQ(sync(), "0 ");

  for (const char* mark : {"damaged", "<plist version=\"1.0\"><array><true/></array></plist>",
                           "<plist version=\"1.0\"><array><string/></array></plist>",
                           "<plist version=\"1.0\"><array><string>a/b</string></array></plist>",
                           "<plist version=\"1.0\"><dict/></plist>"}) {
    home.write("Library/Accounts/.untold.plist", mark);
    EXPECT_EQ(sync(), "0 account gnome-a gnome-a;account gnome-b gnome-b;account gnome-c gnome-c;");
    EXPECT_THAT(err.str(), HasSubstr("damaged"));
    EXPECT_EQ(sync(), "0 ");
  }
}

TEST_F(OnlineAccountsSyncTest, IsSwitchedOnByAManifestOfItsOwnPoint) {
  const ExtensionCatalog manifests({{home.path(), "manifests"}});
  EXPECT_FALSE(OnlineAccountsSync::isSwitchedOn(manifests));
  using Sync = OnlineAccountsSync;
  for (const std::string point : {"ovaro.quenlet", Sync::extensionPoint}) {
    home.write("manifests/any.plist", donorManifest(Sync::bundleIdentifier, "x", point));
    EXPECT_EQ(Sync::isSwitchedOn(manifests), point == Sync::extensionPoint);
  }
}

}  // namespace
}  // namespace quenlet
