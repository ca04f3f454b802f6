#include <gmock/gmock.h>

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
  bool cardHas(const std::string& text) { return card().find(text) != std::string::npos; }
  bool fileHas(const std::string& text) {
    return readFile(donationsFile).find(text) != std::string::npos;
  }
  // Puts the SIM cards' numbers in place, as "identifier number" pairs.
  void setNumbers(const std::vector<std::pair<std::string, std::string>>& numbers) {
    std::string list = "<plist version=\"1.0\"><array>";
    for (const auto& [identifier, number] : numbers) {
      list += "<dict><key>identifier</key><string>" + identifier +
              "</string><key>value</key><string>" + number + "</string></dict>";
    }
    writeFile(telephony / "new", list + "</array></plist>");
    std::filesystem::rename(telephony / "new", telephony / "sim.plist");
  }
  void setDeviceClass(int number) {
    writeFile(telephony / "device.plist",
              "<plist version=\"1.0\"><dict><key>DeviceClassNumber</key><integer>" +
                  std::to_string(number) + "</integer></dict></plist>");
  }

  const std::filesystem::path telephony = home / "Library/Telephony";
};

TEST_F(SourcesTest, KeepAccountsInStepWithTheCard) {
  startAgent();
  EXPECT_EQ(account({"add", "--id", "work", "--username", "anna@example.org", "--property",
                     "FullUserName=Anna Berg"}),
            0);
  EXPECT_TRUE(eventually([this] { return cardHas("anna@example.org"); }));
  EXPECT_THAT(card(), AllOf(HasSubstr("Anna Berg"), HasSubstr("from ovaro.quenlet.accounts"),
                            HasSubstr("email:work")));
  EXPECT_EQ(account({"add", "--id", "out", "--type", "ovaro.account.SMTP", "--username",
                     "smtp@example.org"}),
            0);
  EXPECT_EQ(account({"change", "--id", "work", "--username", "berg@example.org"}), 0);
  EXPECT_TRUE(eventually([this] { return cardHas("berg@example.org"); }));
  EXPECT_THAT(card(), Not(HasSubstr("anna@example.org")));
  EXPECT_EQ(account({"remove", "--id", "work"}), 0);
  EXPECT_TRUE(eventually([this] { return card() == "The card is empty.\n"; }));
  EXPECT_EQ(countDonations(), 0);
  EXPECT_FALSE(fileHas("example.org"));
  EXPECT_THAT(agent->err(), AllOf(HasSubstr("accountAdded:"), HasSubstr("accountRemoved:"),
                                  Not(HasSubstr("example.org"))));
}

TEST_F(SourcesTest, CatchUpWithAccountsThatChangedWithoutTheAgent) {
  startAgent();
  ASSERT_TRUE(eventually([this] { return !agent->out().empty(); })) << "all accounts were read";
  EXPECT_EQ(stopAgent(), 0);
  const Ran added = quenlet({"account", "add", "--id", "home", "--username", "anna@example.org"});
  EXPECT_EQ(added.code, 0);
  EXPECT_THAT(added.err, HasSubstr("agent"));
  writeFile(home / "Library/Accounts/broken.plist", "<plist");
  startAgent();
  EXPECT_TRUE(eventually([this] { return cardHas("anna@example.org"); }));
  EXPECT_THAT(agent->err(), HasSubstr("broken.plist"));
  EXPECT_EQ(stopAgent(), 0);
  EXPECT_EQ(account({"remove", "--id", "home"}), 0);
  startAgent();
  EXPECT_TRUE(eventually([this] { return !fileHas("anna@example.org"); }));
  EXPECT_EQ(countDonations(), 0);
}

TEST_F(SourcesTest, FollowTheNumbersOfTheSIMCards) {
  setDeviceClass(1);
  setNumbers({{"1", "+49 30 1234567"}, {"2", "not a number"}});
  startAgent();
  ASSERT_TRUE(eventually([this] { return cardHas("+49 30 1234567"); }));
  EXPECT_THAT(card(), AllOf(HasSubstr("device"), HasSubstr("from ovaro.quenlet.sim-card")));
  EXPECT_THAT(agent->out(), HasSubstr("Could not convert phone number not a number\n"));
  setNumbers({{"1", "+49 30 1234567"}, {"2", "(030) 765-4321"}});
  EXPECT_TRUE(eventually([this] { return cardHas("(030) 765-4321"); }));
  EXPECT_TRUE(cardHas("+49 30 1234567"));
  setNumbers({});
  EXPECT_TRUE(eventually([this] { return card() == "The card is empty.\n"; }));
}

// Extensions, then accounts, then SIM cards.
TEST_F(SourcesTest, AreAskedInTheirOrderWhenDonationsComeOnAgain) {
  setDeviceClass(1);
  setNumbers({{"1", "+49 30 1234567"}});
  writeFile(home / "Library/Contacts/Cards/anna.vcf",
            cardText("Anna Berg", {"EMAIL:card@example.org"}));
  EXPECT_EQ(account({"add", "--id", "work", "--username", "anna@example.org"}), 0);
  startAgent();
  EXPECT_EQ(quenlet({"disable"}).code, 0);
  ASSERT_TRUE(eventually([this] { return quenlet({"card"}).code == 1; }));
  EXPECT_EQ(quenlet({"enable"}).code, 0);
  EXPECT_TRUE(eventually([this] {
    return cardHas("card@example.org") && cardHas("anna@example.org") && cardHas("+49 30 1234567");
  }));
  EXPECT_THAT(agent->out(), HasSubstr("SIM info: "));
  // The extension's program answers later than it was asked.
  EXPECT_THAT(agent->err(),
              testing::ContainsRegex("willDiscoverExtensions.*didDiscoverExtensions.*donating:.*"
                                     "willSaveExtensionVersions.*featureDidEnable"));
}

TEST_F(SourcesTest, DeviceWithoutSIMCardsIsNotWatched) {
  setDeviceClass(2);
  setNumbers({{"1", "+49 30 1234567"}});
  startAgent();
  // The daily report comes together with the SIM cards' first numbers, or after them.
  ASSERT_TRUE(
      eventually([this] { return agent->err().find("didReportAnalytics") != std::string::npos; }));
  setNumbers({{"1", "+49 30 7654321"}});
  EXPECT_EQ(donate("com.example.mail", "Anna Berg", {}).code, 0);
  EXPECT_EQ(countDonations(), 1);
}

}  // namespace
}  // namespace quenlet
