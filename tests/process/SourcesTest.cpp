#include <ctime>

#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class SourcesTest : public ProcessTest {
 protected:
  int account(std::vector<std::string> words) {
    words.insert(words.begin(), "account");
    return quenlet(std::move(words)).code;
  }
  void install(const std::string& bundle, const std::string& program) {
    writeFile(extensions / bundle, "#!/usr/bin/env python3\nimport os, time\n" + program, 0700);
    writeFile(
        extensions / (bundle + ".plist"),
        plist("<dict><key>extensionPoint</key><string>ovaro.quenlet</string>"
              "<key>version</key><string>1.0</string><key>bundleIdentifier</key><string>" +
              bundle + "</string><key>executable</key><string>" + bundle + "</string></dict>"));
  }
  static std::string dayFromNow(int days) {
    const std::time_t when = std::time(nullptr) + days * 86400;
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d", std::gmtime(&when));
    return text;
  }

  const std::filesystem::path extensions = home / "Library/Extensions";
};

TEST_F(SourcesTest, KeepAccountsInStepWithTheCard) {
  startAgent();
  EXPECT_EQ(account({"add", "--id", "work", "--username", "anna@example.org", "--property",
                     "FullUserName=Anna Berg"}),
            0);
  EXPECT_TRUE(eventually([this] { return cardHas("anna@example.org"); }));
  EXPECT_THAT(card(), AllOf(HasSubstr("Anna Berg"), HasSubstr("from ovaro.quenlet.accounts"),
                            HasSubstr("email:work")));
  EXPECT_EQ(account({"change", "--id", "work", "--username", "berg@example.org"}), 0);
  EXPECT_TRUE(eventually([this] { return cardHas("berg@example.org"); }));
  EXPECT_THAT(card(), Not(HasSubstr("anna@example.org")));
  EXPECT_EQ(account({"remove", "--id", "work"}), 0);
  EXPECT_TRUE(eventually([this] { return card() == "The card is empty.\n"; }));
  EXPECT_FALSE(fileHas("example.org"));

  EXPECT_THAT(agent->err(), AllOf(HasSubstr("accountAdded:"), HasSubstr("accountRemoved:")));
}

TEST_F(SourcesTest, CatchUpWithAccountsThatChangedWithoutTheAgent) {
  startAgent();
  ASSERT_TRUE(eventually([this] { return !agent->out().empty(); })) << "all accounts were read";
  EXPECT_EQ(stopAgent(), 0);
  EXPECT_EQ(account({"add", "--id", "home", "--username", "anna@example.org"}), 0);
  writeFile(home / "Library/Accounts/broken.plist", "<plist");
  startAgent();
  EXPECT_TRUE(eventually([this] { return cardHas("anna@example.org"); }));
  EXPECT_TRUE(agent->says("broken.plist"));
  EXPECT_EQ(stopAgent(), 0);
  EXPECT_EQ(account({"remove", "--id", "home"}), 0);
  startAgent();
  EXPECT_TRUE(eventually([this] { return !fileHas("anna@example.org"); }));
  EXPECT_EQ(countDonations(), 0);
}

TEST_F(SourcesTest, FollowTheNumbersOfTheSIMCards) {
  setDeviceClass(1);
  setNumbers({"+49 30 1234567", "not a number"});
  startAgent();
  ASSERT_TRUE(eventually([this] { return cardHas("+49 30 1234567"); }));
  EXPECT_THAT(card(), AllOf(HasSubstr("device"), HasSubstr("from ovaro.quenlet.sim-card")));
  EXPECT_TRUE(agent->says("Could not convert phone number not a number\n"));
  setNumbers({"+49 30 1234567", "(030) 765-4321"});
  EXPECT_TRUE(eventually([this] { return cardHas("(030) 765-4321"); }));

  EXPECT_TRUE(cardHas("+49 30 1234567"));
  disableDonations();
  EXPECT_EQ(quenlet({"enable"}).code, 0);
  EXPECT_TRUE(eventually([this] { return agent->says("SIM info: "); })) << "asked for all again";
  setNumbers({});
  EXPECT_TRUE(eventually([this] { return card() == "The card is empty.\n"; }));
}

TEST_F(SourcesTest, RenewsWithdrawsAndBringsBackTheCardsOfADirectory) {
  const std::filesystem::path card = home / "Library/Contacts/Cards/anna.vcf";

  writeFile(card, cardText("Anna Berg", {"EMAIL:anna@example.org"}));
  writeFile(card.parent_path() / "notes.txt", "no card");
  startAgent();
  disableDonations();
  EXPECT_EQ(quenlet({"enable"}).code, 0);
  ASSERT_TRUE(eventually([this] { return countDonations() == 2; })) << "all is donated again";
  // A week or more is left of thirty days; of two days and of none, thirty are left again.
  for (const std::string left : {"2 * 86400", "-3600"}) {
    EXPECT_EQ(stopAgent(), 0);
    rewriteDonations("entry['origin']['expirationDate'] = time.time() + " + left);
    startAgent();
    EXPECT_EQ(countDonations(), left == "-3600" ? 0 : 2);
    EXPECT_TRUE(eventually([this] {
      const std::string list = quenlet({"list", "--json"}).out;
      return list.find("\"" + dayFromNow(30)) != list.rfind("\"" + dayFromNow(30));
    })) << left;
  }
  EXPECT_EQ(stopAgent(), 0);
  rewriteDonations("entry['origin']['expirationDate'] = time.time() + 86400");

  writeFile(card, cardText("Anna Berg", {}));
  startAgent();
  EXPECT_TRUE(eventually([this] { return countDonations() == 1; })) << "the address is gone";
  EXPECT_EQ(stopAgent(), 0);
  rewriteDonations("entry['origin']['expirationDate'] = time.time() + 86400");
  writeFile(card, "no card");
  startAgent();
  EXPECT_TRUE(eventually([this] { return agent->says("couldNotRenew"); }));
  EXPECT_EQ(countDonations(), 1) << "a card that cannot be read may hold it";
}

TEST_F(SourcesTest, HoldNothingUpWhenTheirProgramsHangFloodOrEnd) {
  install("com.example.hangs", "time.sleep(600)");
  install("com.example.floods", "while True: os.write(0, bytes(65536))");
  install("com.example.ends", "");
  startAgent();
  for (const char* bundle : {"com.example.hangs", "com.example.floods", "com.example.ends"}) {
    EXPECT_EQ(donate(bundle, "Anna Berg", {}).code, 0);
  }
  ASSERT_TRUE(eventually([&] { return agent->hasChildren(); }));
  agent->signal(SIGHUP);
  ASSERT_TRUE(eventually([&] { return agent->says("Hup hup hup!!\n"); }));
  EXPECT_TRUE(cardHas("Anna Berg"));
  EXPECT_FALSE(agent->says("extension-error 4")) << "served while one hangs";
  for (const char* code : {"3", "4", "5"}) {
    EXPECT_TRUE(eventually([&] { return agent->says(std::string("extension-error ") + code); }));
  }
  EXPECT_TRUE(eventually([&] { return !agent->hasChildren(); })) << "neither program nor zombie";
  EXPECT_EQ(countDonations(), 3) << "what could not be renewed stays as it is";
}

TEST_F(SourcesTest, EndWithTheAgent) {
  const std::filesystem::path file = temporary / "pid";
  install("com.example.donor", "open('" + file.string() +
                                   "', 'w').write(str(os.getpid()))\nwhile True: time.sleep(1)\n");
  startAgent();
  EXPECT_EQ(donate("com.example.donor", "Anna Berg", {}).code, 0);
  ASSERT_TRUE(eventually([&] { return !readFile(file).empty(); }));
  EXPECT_EQ(stopAgent(), 0);
  EXPECT_TRUE(eventually([&] { return !std::filesystem::exists("/proc/" + readFile(file)); }));
}

}  // namespace
}  // namespace quenlet
