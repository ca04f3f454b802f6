#include "tools/commands/CommandLine.h"

#include <gmock/gmock.h>
#include <stdlib.h>

#include <iterator>
#include <sstream>

#include "platform/files/LockFile.h"
#include "platform/ipc/ServiceInterface.h"
#include "tests/support/DonationFactory.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/TemporaryDirectory.h"
#include "tools/commands/DonationPresenter.h"
#include "tools/commands/UserAccounts.h"

namespace quenlet {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr char versions[] = "Library/Contacts/Donations/bundle_versions.plist";

class CommandLineTest : public testing::Test {
 protected:
  CommandLineTest() { ::setenv("HOME", home.path().c_str(), 1); }

  // The exit code of words that blanks set apart, '' for none; what was written is in `out` and
  // `err`.
  int run(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> words(std::istream_iterator<std::string>(stream), {});
    std::replace(words.begin(), words.end(), std::string("''"), std::string());
    out.str("");
    err.str("");
    Session session{out, err, agent, Date(1767225600)};  // 2026-01-01
    return static_cast<int>(CommandLine::run(words, session));
  }
  std::string file(const std::string& name, const std::string& properties) {
    home.write(name, "BEGIN:VCARD\nVERSION:4.0\n" + properties + "END:VCARD\n");
    return home / name;
  }
  // The account in the store; one without identifier when it cannot be read.
  static Account stored(const std::string& identifier) {
    const auto account = UserAccounts::open().left()->store().accountWithIdentifier(identifier);
    return account.isLeft() ? *account.left() : Account();
  }

  const TemporaryDirectory home;
  RecordingAgent agent;
  std::ostringstream out;
  std::ostringstream err;
};

TEST_F(CommandLineTest, AsksTheAgentAndTellsItsAnswerByTheExitCode) {
  const std::string card = file("card.vcf", "FN:Ann Berg\nEMAIL:ann@example.org\n");
  const std::pair<std::string, const char*> cases[] = {
      {"donate " + card, "donate 2"},
      {"card", "synchronous"},
      {"list", "list"},
      {"remove a b", "removeIdentifiers a b"},
      {"forget b", "removeBundle b"},
      {"reject a", "reject a"},
      {"reject-cluster c", "rejectCluster c"},
      {"clear-rejections", "clear"},
  };
  const std::pair<ErrorPtr, int> answers[] = {
      {nullptr, 0},
      {makeError("domain", 7, "a sentence"), 1},
      {makeServiceError(ServiceErrorCode::noService, ""), 3},
      {makeServiceError(ServiceErrorCode::connectionBroken, ""), 3},
  };
  for (const auto& [words, call] : cases) {
    for (const auto& [error, code] : answers) {
      agent.error = error;
      EXPECT_EQ(run(words), code) << call;
      EXPECT_EQ(agent.takeCalls(), call + std::string(";"));
      EXPECT_EQ(err.str(), error ? "quenlet: " + error->description() + "\n" : "") << call;
    }
  }
}

TEST_F(CommandLineTest, RefusesWrongUsageWithoutAskingTheAgent) {
  for (const char* words :
       {"", "unknown", "donate", "donate x --expires nan", "donate x --expires 1e9",
        "donate x --bundle ''", "card --format xml", "remove"}) {
    EXPECT_EQ(run(words), 2) << words;
    EXPECT_THAT(err.str(), StartsWith("quenlet: usage 2: "));
  }
  EXPECT_EQ(run("donate " + file("bad.vcf", "VERSION\n")), 1);
  EXPECT_THAT(err.str(), HasSubstr("bad.vcf: line 3: "));
  EXPECT_EQ(agent.takeCalls(), "");
}

TEST_F(CommandLineTest, DryRunShowsWhatWouldBeDonatedUnderStableIdentifiers) {
  const std::string two = file("two%cards.vcf",
                               "FN:Ann Berg\nEMAIL:a@example.org\nEMAIL:b@example.org\nTEL:no\n"
                               "END:VCARD\nBEGIN:VCARD\nVERSION:4.0\nFN:Ann B.\nUID:u:1\n");
  EXPECT_EQ(run("donate " + two + " --dry-run --bundle a:b --expires -0.5"), 0);
  EXPECT_EQ(agent.takeCalls(), "");
  const std::string dates = "  2026-01-01  2025-12-31\n";
  for (const std::string identifier : {"two%25cards.vcf:1:name   ", "two%25cards.vcf:1:email:1",
                                       "two%25cards.vcf:1:email:2", "u%3A1:name               "}) {
    EXPECT_THAT(out.str(), HasSubstr("  a:b     a%3Ab:" + identifier + dates));
  }
  EXPECT_EQ(err.str(), "quenlet: " + two + ": skipped 1 entry without a usable value\n");
  EXPECT_EQ(run("donate " + two + " " + two + " --dry-run"), 0);
  EXPECT_THAT(err.str(), HasSubstr("4 values will replace others"));
}

TEST_F(CommandLineTest, ShowsTheCardForPeopleAndPrograms) {
  EXPECT_EQ(run("card"), 0);
  EXPECT_EQ(out.str(),
            "Name\n  Ann\n\nE-mail\n  ann@example.org  home  from bundle  id  until 1970-01-01\n");
  EXPECT_EQ(run("card --format json"), 0);
  EXPECT_THAT(
      out.str(),
      StartsWith(R"({"name":{"givenName":"Ann"},"emailAddresses":[{"value":"ann@example.org",)"));
  out.setstate(std::ios::badbit);
  EXPECT_EQ(run("card"), 1);
  EXPECT_THAT(err.str(), StartsWith("quenlet: posix-error 5: "));
}

TEST_F(CommandLineTest, ShowsStatsFromTheUsersFilesAndAsksNoAgent) {
  EXPECT_EQ(run("stats"), 0);
  EXPECT_EQ(out.str(), "Last attempt  never\n");
  home.write("Library/Preferences/ovaro.quenlet.plist",
             "<plist version=\"1.0\"><dict><key>last-metrics-attempt</key>"
             "<date>2026-05-01T12:00:00Z</date></dict></plist>");
  const std::string counters = "# HELP new The counter new\n# TYPE new gauge\nnew -3\n";
  home.write("Library/Logs/quenlet/counters.prom", counters);
  EXPECT_EQ(run("stats --json"), 0);
  EXPECT_EQ(out.str(), "{\"lastAttempt\":\"2026-05-01T12:00:00Z\",\"counters\":{\"new\":-3}}\n");
  home.write("Library/Logs/quenlet/counters.prom", counters + "\x1B[2J");
  EXPECT_EQ(run("stats"), 1);
  EXPECT_THAT(err.str(), HasSubstr("counter-error 4: counters.prom: line 4"));
  EXPECT_EQ(agent.takeCalls(), "");
}

TEST_F(CommandLineTest, KeepsTheAccountStoreAndTellsTheAgentOfEachChange) {
  home.write("p.plist",
             "<plist version='1.0'><dict><key>ovaroId</key><integer>7</integer>"
             "<key>a</key><string>file</string></dict></plist>");
  const std::string file = home / "p.plist";
  EXPECT_EQ(run("account add --id w --username ann@x.org --type t --properties " + file +
                " --property a=b=c --property e="),
            0);
  EXPECT_EQ(agent.takeCalls(), "account - w;");
  Account expected{"w", AccountType{"t"}, "ann@x.org", true, {"mail"}};
  expected.properties = {{"ovaroId", 7}, {"a", "b=c"}, {"e", ""}};
  EXPECT_EQ(stored("w"), expected);
  EXPECT_EQ(run("account change --id w --inactive --type '' --data-class x --data-class y "
                "--drop-property e"),
            0);
  EXPECT_EQ(agent.takeCalls(), "account w w;");
  expected = {"w", {}, "ann@x.org", false, {"x", "y"}, {{"ovaroId", 7}, {"a", "b=c"}}};
  EXPECT_EQ(stored("w"), expected);
  EXPECT_EQ(run("account list --json"), 0);
  EXPECT_EQ(out.str(), R"([{"identifier":"w","active":false,"username":"ann@x.org"}])"
                       "\n");
  home.write("Library/Accounts/w.plist", "damaged, yet it goes");
  EXPECT_EQ(run("account remove --id w"), 0);
  EXPECT_EQ(agent.takeCalls(), "account w -;");
  EXPECT_EQ(err.str(), "");
}

TEST_F(CommandLineTest, RefusesWhatCannotBeDoneToAnAccount) {
  EXPECT_EQ(run("account add --id w"), 0);
  static_cast<void>(agent.takeCalls());
  home.write("Library/Accounts/damaged.plist", "damaged");
  const std::string directory = home / "Library/Accounts/";
  const std::tuple<std::string, int, const char*> cases[] = {
      {"add --id w --type x", 1, "\"account change\""},
      {"add --id ../w", 1, "account-error 1"},
      {"add --id damaged", 1, "property-list-error"},
      {"change --id w --properties " + directory + "damaged.plist", 1, "damaged.plist: "},
      {"change --id n", 1, "account-error 3"},
      {"remove --id n", 1, "account-error 3"},
      {"change --id w --property =x", 2, "usage"},
      {"change --id w --data-class x --no-data-class", 2, "usage"},
      {"remove", 2, "usage"},
      {"", 2, "usage"},
  };
  for (const auto& [words, code, text] : cases) {
    EXPECT_EQ(run("account " + words), code) << words;
    EXPECT_THAT(err.str(), HasSubstr(text));
  }
  EXPECT_EQ(agent.takeCalls(), "account n -;") << "what is gone may have donated";
  EXPECT_FALSE(stored("w").accountType);
}

TEST_F(CommandLineTest, HasTheNextAgentReadAllAccountsOnceNoneRuns) {
  agent.error = makeServiceError(ServiceErrorCode::noService, "");
  EXPECT_EQ(run("account add --id w"), 0) << "no table yet";

  const std::string before =
      "<plist version='1.0'><dict><key>versions</key><dict><key>org.x</key><integer>1</integer>"
      "<key>ovaro.quenlet.accounts</key><integer>3</integer></dict><key>note</key><true/></dict></"
      "plist>";
  home.write(versions, before);
  static_cast<void>(agent.takeCalls());
  agent.error = makeError("domain", 7, "a sentence");
  EXPECT_EQ(run("account change --id w --type refused"), 1);
  EXPECT_THAT(err.str(), testing::EndsWith("\nquenlet: domain 7: a sentence\n"));
  EXPECT_EQ(stored("w").accountType->identifier, "refused");
  const auto accounts = std::move(UserAccounts::open()).takeLeft();
  auto lock = LockFile::tryLock((home / versions).parent_path() / "agent.lock").left();
  EXPECT_EQ(accounts->catchUp().schedule()->code(), EWOULDBLOCK);
  EXPECT_EQ(home.read(versions), before) << "an agent keeps it";
  lock.reset();
  agent.error = makeServiceError(ServiceErrorCode::noService, "");
  EXPECT_EQ(run("account change --id w"), 0);
  EXPECT_THAT(err.str(), HasSubstr("no agent runs"));
  EXPECT_EQ(agent.takeCalls(), "account w w;account w w;");
  EXPECT_THAT(home.read(versions), testing::AllOf(HasSubstr("org.x"), HasSubstr("note"),
                                                  testing::Not(HasSubstr("quenlet.accounts"))));
}

TEST(DonationPresenterTest, KeepsDonorsFromSteeringTheTerminal) {
  for (const std::string hostile : {"\x1B", "\x07", "\n", "\x7F", "\xC2\x9B", "\xFF",
                                    "\xE2\x80\xAE", "\r", "\t", "\xE2\x81\xA6"}) {
    std::ostringstream out;
    DonationPresenter::writeTable(
        out, {email("a" + hostile + "b", from("b" + hostile, "id"), "x" + hostile)});
    const std::string shown = out.str();
    EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), 2) << shown;
    EXPECT_TRUE(hostile == "\n" || shown.find(hostile) == std::string::npos) << shown;
  }
}

}  // namespace
}  // namespace quenlet
