#include "tools/commands/AccountWord.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
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
using Words = std::vector<std::string>;

constexpr char versions[] = "Library/Contacts/Donations/bundle_versions.plist";

class AccountWordTest : public testing::Test {
 protected:
  AccountWordTest() { ::setenv("HOME", home.root().c_str(), 1); }

  // The exit code of "account" with further words; what was written is in `out` and `err`.
  int run(Words words) {
    words.insert(words.begin(), "account");
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
  EXPECT_EQ(run({"add", "--id", "w", "--username", "ann@x.org", "--type", "t", "--properties",
                 home / "p.plist", "--property", "a=b=c", "--property", "e="}),
            0);
  EXPECT_EQ(agent.takeCalls(), "account - w;");
  Account expected{.identifier = "w",
                   .accountType = AccountType{"t"},
                   .username = "ann@x.org",
                   .isActive = true,
                   .enabledDataclasses = {"mail"},
                   .properties = {{"ovaroId", 7}, {"a", "b=c"}, {"e", ""}}};
  EXPECT_EQ(stored("w"), expected);
  EXPECT_EQ(run({"change", "--id", "w", "--inactive", "--type", "", "--data-class", "x",
                 "--data-class", "y", "--drop-property", "e"}),
            0);
  EXPECT_EQ(agent.takeCalls(), "account w w;");
  expected.accountType.reset();
  expected.isActive = false;
  expected.enabledDataclasses = {"x", "y"};
  expected.properties.erase("e");
  EXPECT_EQ(stored("w"), expected);
  EXPECT_EQ(run({"add", "--id", "\u2028a", "--no-data-class"}), 0);
  EXPECT_TRUE(stored("\u2028a").enabledDataclasses.empty());
  static_cast<void>(agent.takeCalls());
  EXPECT_EQ(run({"list"}), 0);
  EXPECT_EQ(out.str(),
            "IDENTIFIER  ACTIVE  USER NAME\nw           no      ann@x.org\n"
            "\uFFFDa          yes\n");
  EXPECT_EQ(run({"list", "--json"}), 0);
  EXPECT_THAT(out.str(),
              HasSubstr(R"([{"identifier":"w","active":false,"username":"ann@x.org"},{)"));
  EXPECT_EQ(agent.takeCalls(), "");
  home.write("Library/Accounts/w.plist", "damaged, yet it goes");
  EXPECT_EQ(run({"remove", "--id", "w"}), 0);
  EXPECT_EQ(agent.takeCalls(), "account w -;");
  EXPECT_EQ(err.str(), "");
}

TEST_F(AccountWordTest, RefusesWhatCannotBeDoneAndAsksNobody) {
  EXPECT_EQ(run({"add", "--id", "w"}), 0);
  static_cast<void>(agent.takeCalls());
  home.write("Library/Accounts/damaged.plist", "damaged");
  const std::tuple<Words, int, const char*> cases[] = {
      {{"add", "--id", "w", "--type", "x"}, 1, "\"account change\""},
      {{"add", "--id", "../w"}, 1, "account-error 1"},
      {{"add", "--id", "damaged"}, 1, "property-list-error"},
      {{"add", "--id", "n", "--properties", home / "none"}, 1, "posix-error 2"},
      {{"change", "--id", "w", "--properties", home / "Library/Accounts/damaged.plist"},
       1,
       "damaged.plist: "},
      {{"change", "--id", "n"}, 1, "account-error 3"},
      {{"remove", "--id", "n"}, 1, "account-error 3"},
      {{"change", "--id", "w", "--property", "=x"}, 2, "usage"},
      {{"change", "--id", "w", "--active", "--inactive"}, 2, "usage"},
      {{"change", "--id", "w", "--data-class", "x", "--no-data-class"}, 2, "usage"},
      {{"remove"}, 2, "usage"},
      {{}, 2, "usage"},
  };
  for (const auto& [words, code, text] : cases) {
    EXPECT_EQ(run(words), code) << testing::PrintToString(words);
    EXPECT_THAT(err.str(), HasSubstr(text));
  }
  EXPECT_EQ(agent.takeCalls(), "");
  EXPECT_FALSE(stored("w").accountType);
}

TEST_F(AccountWordTest, LeavesTheStoreWrittenWhenTheAgentRefuses) {
  writeVersions();
  agent.error = makeError("domain", 7, "a sentence");
  EXPECT_EQ(run({"add", "--id", "w"}), 1);
  EXPECT_THAT(err.str(), testing::EndsWith("\nquenlet: domain 7: a sentence\n"));
  EXPECT_EQ(stored("w").identifier, "w");
  EXPECT_THAT(home.read(versions), HasSubstr("ovaro.quenlet.accounts"));
}

TEST_F(AccountWordTest, HasTheNextAgentReadAllAccountsWhenNoneRuns) {
  agent.error = makeServiceError(ServiceErrorCode::noService, "");
  EXPECT_EQ(run({"add", "--id", "w"}), 0);
  writeVersions();
  EXPECT_EQ(run({"change", "--id", "w"}), 0);
  EXPECT_THAT(err.str(), HasSubstr("no agent runs"));
  EXPECT_EQ(agent.takeCalls(), "account - w;account w w;");
  const std::string table = home.read(versions);
  EXPECT_THAT(table, HasSubstr("org.x"));
  EXPECT_THAT(table, HasSubstr("note"));
  EXPECT_THAT(table, testing::Not(HasSubstr("ovaro.quenlet.accounts")));
}

TEST_F(AccountWordTest, LeavesTheTableAloneWhileAnAgentKeepsIt) {
  writeVersions();
  const std::string before = home.read(versions);
  const auto accounts = std::move(UserAccounts::open()).takeLeft();
  auto lock = LockFile::tryLock((home / versions).parent_path() / "agent.lock").left();
  EXPECT_EQ(accounts->catchUp().schedule()->code(), EWOULDBLOCK);
  EXPECT_EQ(home.read(versions), before);
  lock.reset();
  EXPECT_EQ(accounts->catchUp().schedule(), nullptr);
  EXPECT_NE(home.read(versions), before);
}

}  // namespace
}  // namespace quenlet
