#include "quenlet/Date.h"
#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using namespace testing;

class SourcesTest : public ProcessTest {
 protected:
  const std::filesystem::path telephony = home / "Library/Telephony";

  void install(const std::string& bundle, const std::string& program) {
    writeFile(extensions / bundle, donorScript(program), 0700);
    installManifest(bundle);
  }
  void writeTelephony(const char* name, const std::string& content) {
    putInPlace(telephony / name, "<plist version=\"1.0\">" + content + "</plist>");
  }
  void setNumbers(const std::vector<std::string>& numbers) {
    std::string list;
    for (const std::string& number : numbers) {
      list += "<dict><key>identifier</key><string>" + std::to_string(list.size()) +
              "</string><key>value</key><string>" + number + "</string></dict>";
    }
    writeTelephony("new", "<array>" + list + "</array>");
    std::filesystem::rename(telephony / "new", telephony / "sim.plist");
  }
  static std::string dayInAMonth() {
    return Date::now().addingSeconds(30 * 86400).iso8601().substr(0, 10);
  }
};

TEST_F(SourcesTest, LoseNoNewsOfAccountsWhenTheWordIsKilled) {
  std::string online;
  for (const std::string name : {"a", "b"}) {
    online += "[Account " + name + "]\nProvider=imap_smtp\nIdentity=x\nPresentationIdentity=x\n" +
              "Enabled=true\nEmailAddress=" + name + "@example.org\nName=\n";
  }
  writeFile(home / ".config/goa-1.0/accounts.conf", online);
  startAgent();
  ASSERT_TRUE(eventually([this] { return !agent->out().empty(); })) << "all accounts were read";
  // Killed while it waits for the agent's answer.
  const auto cutShort = [this](const std::vector<std::string>& words, const std::string& written) {
    agent->stop();
    std::vector<std::string> command = {bin / "quenlet", "account"};
    command.insert(command.end(), words.begin(), words.end());
    {
      const auto word = start(std::move(command));
      EXPECT_TRUE(
          eventually([&] { return std::filesystem::exists(home / "Library/Accounts" / written); }));
    }
    agent->signal(SIGCONT);
    EXPECT_TRUE(eventually([this] { return countDonations() >= 0; }));
  };
  cutShort({"sync"}, "gnome-b.plist");
  EXPECT_FALSE(cardHas("b@example.org")) << "it has heard of the first at most";
  cutShort({"add", "--id", "work", "--username", "work@example.org"}, "work.plist");
  expect("account sync", 0, {"cut short", "have not changed"});
  EXPECT_TRUE(eventually([this] { return cardHas("work@example.org"); }));
  EXPECT_TRUE(eventually([this] { return cardHas("a@example.org") && cardHas("b@example.org"); }));
}

TEST_F(SourcesTest, FollowTheNumbersOfTheSIMCards) {
  writeTelephony("device.plist", "<dict><key>DeviceClassNumber</key><integer>1</integer></dict>");
  setNumbers({"+49 30 1234567", "not a number"});
  const auto launch = std::chrono::steady_clock::now();
  startAgent();
  ASSERT_TRUE(eventually([this] { return cardHas("+49 30 1234567"); }));
  EXPECT_GE(std::chrono::steady_clock::now() - launch, std::chrono::seconds(5));
  EXPECT_THAT(card(), AllOf(HasSubstr("device"), HasSubstr("from ovaro.quenlet.sim-card")));
  EXPECT_TRUE(
      eventually([this] { return agent->says("Could not convert phone number not a number\n"); }));
  setNumbers({"+49 30 1234567", "(030) 765-4321"});
  EXPECT_TRUE(eventually([this] { return cardHas("(030) 765-4321"); }));

  EXPECT_TRUE(cardHas("+49 30 1234567"));
  setNumbers({});
  EXPECT_TRUE(eventually([this] { return card().starts_with("The card is empty: nothing"); }));
}

// Cards whose values end soon or have ended, and one that lost its address since.
TEST_F(SourcesTest, RenewsWithdrawsAndBringsBackTheCardsOfADirectory) {
  const std::string bundle = "org.quenlet.vcard-extension";
  installManifest(bundle);
  // Closed to the group under any umask.
  writeFile(extensions / bundle, readFile(bin / "quenlet-vcard-extension"), 0755);
  const std::filesystem::path cards = home / "Library/Contacts/Cards";
  for (const std::string name : {"soon", "past", "edited"}) {
    writeFile(cards / (name + ".vcf"), cardText("Anna Berg", {"EMAIL:" + name + "@example.org"}));
  }
  writeFile(cards / "notes.txt", "no card");
  startAgent();
  disableDonations();
  EXPECT_EQ(quenlet("enable").code, 0);
  ASSERT_TRUE(eventually([this] { return countDonations() == 6; })) << "all is donated again";
  EXPECT_EQ(stopAgent(), 0);
  rewriteDonations(
      "entry['origin']['expirationDate'] = time.time() + "
      "(-3600 if ':past' in entry['origin']['donationIdentifier'] else 2 * 86400)");
  writeFile(cards / "edited.vcf", cardText("Anna Berg", {}));
  const std::string soonest = dayInAMonth();
  startAgent();
  EXPECT_TRUE(eventually([&] {
    const std::string list = quenlet("list --json").out;
    int renewed = 0;
    for (const std::string& day : std::set{soonest, dayInAMonth()}) {
      renewed += occurrences(list, '"' + day);
    }
    return countDonations() == 5 && renewed == 5;
  })) << quenlet("list").out;

  EXPECT_EQ(stopAgent(), 0);
  rewriteDonations("entry['origin']['expirationDate'] = time.time() + 86400");
  writeFile(cards / "soon.vcf", "no card");
  startAgent();
  EXPECT_TRUE(eventually([this] { return occurrences(agent->err(), "\"couldNotRenew") == 2; }));
  EXPECT_EQ(countDonations(), 5) << "a card that cannot be read may hold it";
}

TEST_F(SourcesTest, HoldNobodyUpWhileTheyHangAndEndWithTheAgent) {
  const std::filesystem::path file = temporary / "pid";
  install("com.example.hanging",
          "open('" + file.string() + "', 'w').write(str(os.getpid()))\nwhile True: time.sleep(1)");
  install("com.example.prompt", "answer(request(), date(4e9) + b'\\0'); request()");
  std::filesystem::rename(home / ".config", temporary / "chosen");
  ::setenv("XDG_CONFIG_HOME", (temporary / "chosen").c_str(), 1);
  startAgent();
  for (const char* bundle : {"com.example.hanging", "com.example.prompt"}) {
    donate(bundle, "Anna Berg", {});
  }
  ASSERT_TRUE(eventually([&] { return !readFile(file).empty(); }));
  agent->signal(SIGHUP);
  EXPECT_TRUE(eventually([&] { return agent->says("Hup hup hup!!\n"); }));
  EXPECT_TRUE(eventually([&] { return agent->says("\"didRenewValue:"); }));
  EXPECT_FALSE(agent->says("extension-error 4")) << "served while one hangs";
  EXPECT_TRUE(eventually([&] { return agent->children() <= 1; })) << "neither program nor zombie";
  EXPECT_EQ(countDonations(), 2) << "what could not be renewed stays as it is";
  EXPECT_EQ(stopAgent(), 0);
  EXPECT_TRUE(eventually([&] { return !std::filesystem::exists("/proc/" + readFile(file)); }));
}

}  // namespace
}  // namespace quenlet
