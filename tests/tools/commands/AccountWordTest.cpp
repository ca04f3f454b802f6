#include "tools/commands/AccountWord.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <sstream>

#include "platform/files/LockFile.h"
#include "platform/ipc/ServiceInterface.h"
#include "tests/platform/files/FileTree.h"
#include "tests/support/RecordingAgent.h"
#include "tools/commands/CommandLine.h"
#include "tools/commands/UserAccounts.h"

namespace quenlet {
namespace {

using testing::HasSubstr;

constexpr char versions[] = "Library/Contacts/Donations/bundle_versions.plist";

class AccountWordTest : public testing::Test {
 protected:
  AccountWordTest() { ::setenv("HOME", home.root().c_str(), 1); }

  // The exit code of "account" with further words, set apart by blanks; what was written is in
  // `out` and `err`.
  int run(const std::string& text) {
    std::istringstream stream("account " + text);
    std::vector<std::string> words(std::istream_iterator<std::string>(stream), {});
    std::replace(words.begin(), words.end(), std::string("''"), std::string());
    out.str("");
    err.str("");
    Session session{out, err, agent, Date(1767225600)};
    return static_cast<int>(CommandLine::run(words, session));
  }
  // The account in the store; one without identifier when it cannot be read.
  static Account stored(const std::string& identifier) {
    const auto account = UserAccounts::open().left()->store().accountWithIdentifier(identifier);
    return account.isLeft() ? *account.left() : Account();
  }
  // A table that knows the accounts and one extension.
  void writeVersions() const {
    std::filesystem::create_directories((home / versions).parent_path());
    home.write(versions,
               "<plist version='1.0'><dict><key>versions</key><dict>"
               "<key>org.x</key><integer>1</integer>"
               "<key>ovaro.quenlet.accounts</key><integer>3</integer>"
               "</dict><key>note</key><true/></dict></plist>");
  }

  const FileTree home;
  RecordingAgent agent;
  std::ostringstream out;
  std::ostringstream err;
};

TEST_F(AccountWordTest, KeepsTheStoreAndTellsTheAgentOfEachChange) {
  home.write("p.plist",
             "<plist version='1.0'><dict><key>ovaroId</key><integer>7</integer>"
             "<key>a</key><string>file</string></dict></plist>");
  const std::string file = home / "p.plist";
  EXPECT_EQ(run("add --id w --username ann@x.org --type t --properties " + file +
                " --property a=b=c --property e="),
            0);
  EXPECT_EQ(agent.takeCalls(), "account - w;");
  Account expected{"w", AccountType{"t"}, "ann@x.org", true, {"mail"}};
  expected.properties = {{"ovaroId", 7}, {"a", "b=c"}, {"e", ""}};
  EXPECT_EQ(stored("w"), expected);
  EXPECT_EQ(
      run("change --id w --inactive --type '' --data-class x --data-class y --drop-property e"), 0);
  EXPECT_EQ(agent.takeCalls(), "account w w;");
  expected = {"w", {}, "ann@x.org", false, {"x", "y"}, {{"ovaroId", 7}, {"a", "b=c"}}};
  EXPECT_EQ(stored("w"), expected);
  EXPECT_EQ(run("list"), 0);
  EXPECT_EQ(out.str(), "IDENTIFIER  ACTIVE  USER NAME\nw           no      ann@x.org\n");
  EXPECT_EQ(run("list --json"), 0);
  EXPECT_EQ(out.str(), R"([{"identifier":"w","active":false,"username":"ann@x.org"}])"
                       "\n");
  home.write("Library/Accounts/w.plist", "damaged, yet it goes");
  EXPECT_EQ(run("remove --id w"), 0);
  EXPECT_EQ(agent.takeCalls(), "account w -;");
  EXPECT_EQ(err.str(), "");
}

TEST_F(AccountWordTest, RefusesWhatCannotBeDone) {
  EXPECT_EQ(run("add --id w"), 0);
  static_cast<void>(agent.takeCalls());
  home.write("Library/Accounts/damaged.plist", "damaged");
  const std::string directory = home / "Library/Accounts/";
  const std::tuple<std::string, int, const char*> cases[] = {
      {"add --id w --type x", 1, "\"account change\""},
      {"add --id ../w", 1, "account-error 1"},
      {"add --id damaged", 1, "property-list-error"},
      {"add --id n --properties " + directory + "none", 1, "posix-error 2"},
      {"change --id w --properties " + directory + "damaged.plist", 1, "damaged.plist: "},
      {"change --id n", 1, "account-error 3"},
      {"remove --id n", 1, "account-error 3"},
      {"change --id w --property =x", 2, "usage"},
      {"change --id w --active --inactive", 2, "usage"},
      {"change --id w --data-class x --no-data-class", 2, "usage"},
      {"remove", 2, "usage"},
      {"", 2, "usage"},
  };
  for (const auto& [words, code, text] : cases) {
    EXPECT_EQ(run(words), code) << words;
    EXPECT_THAT(err.str(), HasSubstr(text));
  }
  EXPECT_EQ(agent.takeCalls(), "account n -;") << "what is gone may have donated";
  EXPECT_FALSE(stored("w").accountType);
}

TEST_F(AccountWordTest, HasTheNextAgentReadAllAccountsOnceNoneRuns) {
  agent.error = makeServiceError(ServiceErrorCode::noService, "");
  EXPECT_EQ(run("add --id w"), 0) << "no table yet";
  writeVersions();
  const std::string before = home.read(versions);
  static_cast<void>(agent.takeCalls());
  agent.error = makeError("domain", 7, "a sentence");
  EXPECT_EQ(run("change --id w --type refused"), 1);
  EXPECT_THAT(err.str(), testing::EndsWith("\nquenlet: domain 7: a sentence\n"));
  EXPECT_EQ(stored("w").accountType->identifier, "refused");
  const auto accounts = std::move(UserAccounts::open()).takeLeft();
  auto lock = LockFile::tryLock((home / versions).parent_path() / "agent.lock").left();
  EXPECT_EQ(accounts->catchUp().schedule()->code(), EWOULDBLOCK);
  EXPECT_EQ(home.read(versions), before) << "an agent keeps it";
  lock.reset();
  agent.error = makeServiceError(ServiceErrorCode::noService, "");
  EXPECT_EQ(run("change --id w"), 0);
  EXPECT_THAT(err.str(), HasSubstr("no agent runs"));
  EXPECT_EQ(agent.takeCalls(), "account w w;account w w;");
  EXPECT_THAT(home.read(versions), testing::AllOf(HasSubstr("org.x"), HasSubstr("note"),
                                                  testing::Not(HasSubstr("quenlet.accounts"))));
}

}  // namespace
}  // namespace quenlet
