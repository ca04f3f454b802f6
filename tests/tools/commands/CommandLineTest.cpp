#include "tools/commands/CommandLine.h"

#include <fcntl.h>
#include <gmock/gmock.h>

#include "client/Pseudonyms.h"
#include "platform/ipc/ServiceInterface.h"
#include "tests/support/KeepingAgent.h"
#include "tests/support/TemporaryDirectory.h"
#include "tools/owner/ClientPrograms.h"
#include "tools/owner/UserAccounts.h"

namespace quenlet {
namespace {

using namespace testing;

constexpr char versions[] = "Library/Contacts/Donations/bundle_versions.plist";

class CommandLineTest : public testing::Test {
 protected:
  // The exit code of words that blanks set apart, '' for none. Asks `other`, or else `agent`.
  int run(const std::string& text, CorvelProtocol* other = nullptr) {
    std::istringstream stream(text);
    std::vector<std::string> words(std::istream_iterator<std::string>(stream), {});
    std::replace(words.begin(), words.end(), std::string("''"), std::string());
    out.str("");
    err.str("");
    CorvelProtocol& asked = other == nullptr ? static_cast<CorvelProtocol&>(agent) : *other;
    Session session{out, err, asked, Date(1767225600), pause};  // 2026-01-01
    session.errorScreen.width = errorWidth;
    return static_cast<int>(CommandLine::run(words, session));
  }
  std::string file(const std::string& name, const std::string& properties) {
    home.write(name, "BEGIN:VCARD\nVERSION:4.0\n" + properties + "END:VCARD\n");
    return home / name;
  }
  // The account in the store; one without identifier when it cannot be read.
  static Account stored(const std::string& identifier) {
    const auto account = UserAccounts::open().value()->store().accountWithIdentifier(identifier);
    return account.ok() ? *account.value() : Account();
  }

  const TemporaryHome home;
  RecordingAgent agent;
  std::ostringstream out;
  std::ostringstream err;
  std::size_t errorWidth = Screen::unlimitedWidth;
  std::function<void(std::chrono::milliseconds)> pause;
};

TEST_F(CommandLineTest, SaysWhatAppsNeedWhereThereIsNoMessageBus) {
  const std::string advice =
      "hint: call it within your session; elsewhere, DBUS_SESSION_BUS_ADDRESS names the bus\n";
  const std::string none = "there is no message bus of a session here\n";
  ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
  EXPECT_EQ(run("allow org.example.App"), 1);
  EXPECT_EQ(err.str(), "quenlet: app-permissions 1: " + none + advice);
  EXPECT_EQ(run("clients"), 0);
  EXPECT_EQ(err.str(), "hint: sandboxed apps are not listed: " + none + advice);
}

TEST_F(CommandLineTest, AsksTheAgentAndTellsItsAnswerByTheExitCode) {
  const std::tuple<std::string, const char*, const char*> cases[] = {
      {"card", "synchronous;list",
       "Name\n  Ann\n\nE-mail\n  1  ann@example.org  home  from bundle  until 1970-02-10\n"},
      {"card --format json", "synchronous",
       R"({"name":{"givenName":"Ann"},"emailAddresses":[{"value":"ann@example.org",)"},
      {"card --format vcard", "synchronous",
       "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:Ann\r\nN:;Ann;;;\r\nEMAIL;TYPE=home:ann@example.org\r\n"},
      {"list", "list", "#  VALUE "},
      {"list --json", "list", R"([{"kind":"emailAddress","value":"ann@example.org",)"},
      {"clear-rejections", "clear", "The agent keeps no rejections of its own: "},
  };
  const std::tuple<ErrorPtr, int, const char*> answers[] = {
      {nullptr, 0, ""},
      {makeError("domain", 7, "a\x1B[2J\nsentence"), 1,
       "quenlet: domain 7: a\xEF\xBF\xBD[2J\xEF\xBF\xBDsentence\n"},
      {makeServiceError(ServiceErrorCode::noService, "nobody"), 3,
       "quenlet: ovaro.quenlet.service-error 1: nobody\n"
       "hint: no agent runs; start it: systemctl --user start quenlet-agent\n"},
      {makeServiceError(ServiceErrorCode::connectionBroken, "gone"), 3,
       "quenlet: ovaro.quenlet.service-error 2: gone\n"
       "hint: the agent may have ended: systemctl --user status quenlet-agent\n"},
      {makeServiceError(ServiceErrorCode::timedOut, "silent"), 3,
       "quenlet: ovaro.quenlet.service-error 11: silent\n"
       "hint: the agent hangs or is very busy; start it anew:\n"
       "hint: systemctl --user restart quenlet-agent\n"},
      {makeServiceError(ServiceErrorCode::messageTooLarge, "large"), 1,
       "quenlet: ovaro.quenlet.service-error 6: large\n"},
  };
  errorWidth = 60;  // less than some commands take
  for (const auto& [words, call, shown] : cases) {
    for (const auto& [error, code, text] : answers) {
      agent.setError(error);
      EXPECT_EQ(run(words), code) << words;
      const std::string calls = call + std::string(";");
      EXPECT_EQ(agent.takeCalls(), error ? calls.substr(0, calls.find(';') + 1) : calls);
      EXPECT_EQ(err.str(), text) << words;
      EXPECT_THAT(out.str(), StartsWith(error ? "" : shown));
    }
  }
  agent.setError(nullptr);
  out.setstate(std::ios::badbit);
  EXPECT_EQ(run("card"), 1);
  EXPECT_THAT(err.str(), StartsWith("quenlet: posix-error 5: "));
}

TEST_F(CommandLineTest, ListsSomeOfTheDonationsAndSaysWhenNoneIsLikeThat) {
  // The donation expires 40 days after 1970 began, which is long ago.
  const std::tuple<const char*, int, const char*, const char*> rows[] = {
      {"list --hidden", 0, "The only donation is on the card.\n", ""},
      {"list --bundle bundle", 0, "#  VALUE            STATE  BUNDLE  EXPIRES     KIND", ""},
      {"list --bundle other", 0, "The only donation is not like that.\n", ""},
      {"list --bundle other --json", 0, "[]\n", ""},
      {"list --expiring", 0, "#  VALUE", ""},
      {"list --expiring=0 --bundle bundle", 0, "#  VALUE", ""},
      {"list --expiring=soon", 2, "", "quenlet: usage 2: "},
  };
  for (const auto& [words, code, text, error] : rows) {
    EXPECT_EQ(run(words), code) << words;
    EXPECT_THAT(out.str(), StartsWith(text)) << words;
    EXPECT_THAT(err.str(), StartsWith(error)) << words;
  }
}

TEST_F(CommandLineTest, TellsThePreferenceAndWhetherAnAgentAnswers) {
  const std::tuple<ErrorPtr, int, const char*, const char*> rows[] = {
      {nullptr, 0, "answers\nDonations   1\nExpiring    1 within a week\n",
       R"("agentAnswers":true,"donationCount":1,"expiringWithinAWeek":1)"},
      {makeError("domain", 7, "not \x1B[2J"), 0,
       "answers\nRefusal     domain 7: not \xEF\xBF\xBD[2J\n",
       R"("agentAnswers":true,"error":{"domain":"domain","code":7,"description":"not \u001b[2J"})"},
      {makeServiceError(ServiceErrorCode::noService, "a"), 3, "none\n",
       R"("agentAnswers":false,"error":{"domain":"ovaro.quenlet.service-error","code":1,"description":"a"})"},
      {makeServiceError(ServiceErrorCode::timedOut, "b"), 3, "does not answer\n",
       R"("agentAnswers":false,"error":{"domain":"ovaro.quenlet.service-error","code":11,"description":"b"})"},
  };
  const auto programs = ClientPrograms::read().programs;
  const auto served = std::to_string(
      std::count_if(programs.begin(), programs.end(), std::mem_fn(&ClientProgram::isServed)));
  for (const bool enabled : {true, false}) {
    EXPECT_EQ(run(enabled ? "enable" : "disable --yes"), 0);
    for (const auto& [error, code, text, json] : rows) {
      agent.setError(error);
      EXPECT_EQ(run("status"), code);
      EXPECT_EQ(
          out.str(),
          std::string("Preference  ") + (enabled ? "enabled" : "disabled") + "\nAgent       " +
              text + "Own card    none; quenlet me set FILE puts one in place\n" + "Programs    " +
              served + (served == "1" ? " program" : " programs") + " served: quenlet clients\n");
      EXPECT_EQ(run("status --json"), code);
      EXPECT_EQ(out.str(), std::string("{\"donationsEnabled\":") + (enabled ? "true" : "false") +
                               "," + json +
                               R"(,"ownCard":{"isRead":false,"faults":[]},"servedPrograms":)" +
                               served + "}\n");
      EXPECT_EQ(err.str(), "");
    }
  }
}

TEST_F(CommandLineTest, RefusesWrongUsageWithoutAskingTheAgent) {
  for (const char* words :
       {"", "unknown", "donate", "donate x --expires nan", "donate x --expires 1e9",
        "donate x --expires 0", "donate x --expires -0.5", "donate x --only a --all",
        "donate x --bundle ''", "card --format xml", "remove", "list status"}) {
    EXPECT_EQ(run(words), 2) << words;
    EXPECT_THAT(err.str(), StartsWith("quenlet: usage 2: "));
  }
  const std::pair<const char*, const char*> slips[] = {
      {"lsit", "unknown word: lsit\nhint: did you mean list?\n"},
      {"sta", "unknown word: sta\nhint: did you mean status or stats?\n"},
      {"--wide account ad", "unknown word: ad\nhint: did you mean add?\n"},
      {"help cart", "unknown word: cart\nhint: did you mean card?\n"},
      {"entirely", "unknown word: entirely\nhint: quenlet --help\n"},
      {"account add", "hint: quenlet account add --help\n"},
  };
  for (const auto& [words, said] : slips) {
    EXPECT_EQ(run(words), 2);
    EXPECT_THAT(err.str(), HasSubstr(said));
  }
  EXPECT_EQ(run("help account add"), 0);
  const std::string help = out.str();
  EXPECT_EQ(run("account add --help"), 0);
  EXPECT_EQ(out.str(), help);
  EXPECT_EQ(run("donate --help"), 0);
  EXPECT_EQ(run("donate " + file("bad.vcf", "VERSION:5.0\n")), 1);
  EXPECT_THAT(err.str(), HasSubstr("bad.vcf: line 3: "));
  // Endless, and so too large.
  ASSERT_GE(::dup2(FileDescriptor(::open("/dev/zero", O_RDONLY)).get(), STDIN_FILENO), 0);
  EXPECT_EQ(run("donate -"), 1);
  EXPECT_THAT(err.str(), HasSubstr(" -: the text is larger than 32 MiB\n"));
  EXPECT_EQ(agent.takeCalls(), "");
}

TEST_F(CommandLineTest, DryRunShowsWhatWouldBeDonatedAndWhatIsSkipped) {
  const std::string two = file("two%cards.vcf",
                               "FN:Ann Berg\nEMAIL:a@x.org\nEMAIL;TYPE=work:b@x.org\nTEL:no\n"
                               "TEL;TYPE=cell:+49 30 1\nADR;TYPE=home:;;Weg 1;Ulm;;;\n"
                               "PHOTO:data:image/gif;base64,R0lGODlhAQABAAAAADs=\n"
                               "END:VCARD\nBEGIN:VCARD\nVERSION:4.0\nFN:Ann B.\nUID:u:1\n");
  EXPECT_EQ(run("donate " + two + " --all --dry-run --bundle a:b --cluster c --expires 0.5"), 0);
  EXPECT_THAT(out.str(), AllOf(HasSubstr("14 bytes,"), HasSubstr("2026-01-01")));
  EXPECT_EQ(err.str(),
            "quenlet: " + two + ": skipped 1 entry without a usable value: TEL in line 6\n");
  const std::string bad = file("bad.vcf", "END:VCARD\nBEGIN:VCARD\nBEGIN:VCARD\nFN:Bo\n");
  EXPECT_EQ(run("donate " + bad + " --dry-run"), 1);
  EXPECT_EQ(err.str(), "quenlet: skipped a card: " + bad +
                           ": line 4: a card without END\nquenlet: " + bad +
                           ": its earlier values stay, since part of it cannot be read\n");
  EXPECT_THAT(out.str(), HasSubstr("org.quenlet.file." + Pseudonyms::withoutSecret().of(bad)));
  EXPECT_EQ(run("donate " + two + " " + two + " --all --dry-run"), 0);
  EXPECT_THAT(err.str(), HasSubstr("7 values will replace others"));
  EXPECT_EQ(run("donate --dry-run " + file("empty.vcf", "")), 0);
  EXPECT_EQ(out.str(), "The files hold nothing to donate.\n");
  EXPECT_EQ(agent.takeCalls(), "");
}

TEST_F(CommandLineTest, SaysWhatTheAgentDidNotDoAndWhyOnlyIfItIsKnown) {
  KeepingAgent keeper;
  keeper.held = {email("ann@x.org", from("app", "1"), "home"),
                 email("ann@x.org", from("app", "2"), "work")};
  keeper.failing = 3;  // the list, the first label, the second
  keeper.failure = makeError("domain", 7, "a sentence");
  EXPECT_EQ(run("reject ann@x.org", &keeper), 1);
  EXPECT_THAT(out.str(), StartsWith("Rejected the e-mail address ann@x.org: 1 donation, from app"));
  EXPECT_EQ(err.str(), "quenlet: domain 7: a sentence\n");
  home.write("Library/Contacts/Feedback/feedback.plist",
             "<plist version='1.0'><dict><key>ovaro.quenlet.me-card</key><array>"
             "<dict><key>status</key><string>rejected</string>"
             "<key>emailAddress</key><string>a@x.org</string></dict>"
             "<dict><key>status</key><string>confirmed</string>"
             "<key>phoneNumber</key><string>+49 30 1</string></dict></array></dict></plist>");
  EXPECT_EQ(run("clear-rejections"), 0);
  EXPECT_THAT(out.str(), HasSubstr("nothing has changed, and 1 value stays\nrejected."));
  const std::string card = file("c.vcf", "FN:Ann\nUID:u\nEMAIL:a@x.org\nEMAIL:b@x.org\n");
  keeper.rejectsAll = true;
  EXPECT_EQ(run("donate " + card + " --bundle app", &keeper), 0);
  // Where lines end depends on the length of the file's path.
  std::string said = out.str();
  std::replace(said.begin(), said.end(), '\n', ' ');
  EXPECT_THAT(said, HasSubstr(": 0 donated as app, 1 left out: you rejected it, "));
  EXPECT_THAT(said, HasSubstr("left out: not taken by the agent; "));
  EXPECT_EQ(run("unreject a@x.org A@X.ORG 1"), 1) << "no number was shown";
  EXPECT_EQ(run("unreject a@x.org A@X.ORG"), 0);
  EXPECT_THAT(out.str(),
              StartsWith("Not rejected any more: the e-mail address a@x.org.\nIt comes"));
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
  EXPECT_EQ(out.str(), "Added account w.\n");
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
  EXPECT_EQ(out.str(), "Changed account w.\n");
  EXPECT_EQ(run("account change --id w --active --no-data-class --username ''"), 0);
  EXPECT_EQ(stored("w"), (Account{"w", {}, {}, true, {}, expected.properties}));
  EXPECT_EQ(run("account change --id w --inactive --type t --username ann@x.org"), 0);
  static_cast<void>(agent.takeCalls());
  EXPECT_EQ(run("account list"), 0);
  EXPECT_EQ(out.str(),
            "IDENTIFIER  TYPE  ACTIVE  USER NAME\n"
            "w           t     no      ann@x.org\n");
  EXPECT_EQ(run("account list --json"), 0);
  EXPECT_EQ(out.str(), R"([{"identifier":"w","type":"t","active":false,"username":"ann@x.org"}])"
                       "\n");
  home.write("Library/Accounts/w.plist", "damaged, yet it goes");
  EXPECT_EQ(run("account remove --id w"), 0);
  EXPECT_EQ(out.str(), "Removed account w.\n");
  EXPECT_EQ(agent.takeCalls(), "account w -;");
  EXPECT_FALSE(std::filesystem::exists(home / "Library/Accounts/w.plist"));
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
  agent.setError(makeServiceError(ServiceErrorCode::noService, ""));
  EXPECT_EQ(run("account add --id w"), 0) << "no table yet";

  const std::string before =
      "<plist version='1.0'><dict><key>versions</key><dict><key>org.x</key><integer>1</integer>"
      "<key>ovaro.quenlet.accounts</key><integer>3</integer></dict><key>note</key><true/></dict></"
      "plist>";
  home.write(versions, before);
  static_cast<void>(agent.takeCalls());
  agent.setError(makeError("domain", 7, "a sentence"));
  EXPECT_EQ(run("account change --id w --type refused"), 1);
  EXPECT_THAT(err.str(), EndsWith("\nquenlet: domain 7: a sentence\n"));
  EXPECT_EQ(stored("w").accountType->identifier, "refused");
  const auto accounts = std::move(UserAccounts::open()).takeValue();
  auto lock = LockFile::tryLock((home / versions).parent_path() / "agent.lock").value();
  EXPECT_EQ(accounts->forgetWhatAgentHasRead()->code(), EWOULDBLOCK);
  EXPECT_EQ(home.read(versions), before) << "an agent keeps it";
  lock.reset();
  agent.setError(makeServiceError(ServiceErrorCode::noService, ""));
  EXPECT_EQ(run("account change --id w"), 0);
  EXPECT_THAT(err.str(), HasSubstr("no agent runs"));
  EXPECT_EQ(agent.takeCalls(), "account w w;account w w;");
  EXPECT_THAT(home.read(versions),
              AllOf(HasSubstr("org.x"), HasSubstr("note"), Not(HasSubstr("quenlet.accounts"))));
}

TEST_F(CommandLineTest, TellsWithTheNextChangeOfAccountsWhatTheAgentDidNotHear) {
  // A word that it did not hear, the next one, and what it hears then.
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"add --id a", "add --id b", "account - b;account a a;"},
      {"change --id a --type t", "remove --id a", "account a -;"},
      {"remove --id b", "add --id b", "account b b;"},
      {"remove --id b", "sync", "account b -;"},
      {"add --id c", "change --id c", "account c c;"}};
  for (const auto& [unheard, next, calls] : rows) {
    agent.setError(makeServiceError(ServiceErrorCode::timedOut, "silent"));
    EXPECT_EQ(run("account " + std::string(unheard)), 3) << unheard;
    static_cast<void>(agent.takeCalls());
    agent.setError(nullptr);
    EXPECT_EQ(run("account " + std::string(next)), 0) << next;
    EXPECT_EQ(agent.takeCalls(), calls) << next;
  }
}

// It holds its files before it can be reached, and after.
TEST_F(CommandLineTest, GivesAStartingAgentTenSecondsToHearOfAnAccount) {
  home.write(versions, "");
  const auto lock = LockFile::tryLock((home / versions).parent_path() / "agent.lock").value();
  for (const int start : {3, 1000}) {
    agent.setError(makeServiceError(ServiceErrorCode::noService, "nobody"));
    std::chrono::milliseconds waited(0);
    pause = [&, pauses = 0](auto time) mutable {
      waited += time;
      if (++pauses == start) agent.setError(nullptr);
    };
    const bool starts = start == 3;
    EXPECT_EQ(run("account add --id a" + std::to_string(start)), starts ? 0 : 3);
    EXPECT_EQ(waited, std::chrono::milliseconds(starts ? 300 : 9900));
    EXPECT_EQ(err.str(), starts ? ""
                                : "quenlet: the agent does not follow the account store\n"
                                  "quenlet: ovaro.quenlet.service-error 1: nobody\n"
                                  "hint: no agent runs; start it: systemctl --user start "
                                  "quenlet-agent\n");
  }
  agent.setError(makeServiceError(ServiceErrorCode::timedOut, "silent"));
  pause = nullptr;  // it has been waited for long enough
  EXPECT_EQ(run("account remove --id a3"), 3);
}

}  // namespace
}  // namespace quenlet
