#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using namespace testing;

class DonateWordsTest : public ProcessTest {
 protected:
  std::string file(const std::string& name, const std::string& text) {
    writeFile(temporary / name, text);
    return temporary / name;
  }
  std::string json() { return quenlet("list --json").out; }
  // Whether the agent of that home is past its first look, which donates accounts anew.
  static bool hasReadAccounts(const std::filesystem::path& ownersHome) {
    const auto versions = ownersHome / "Library/Contacts/Donations/bundle_versions.plist";
    return exists(versions) && readFile(versions).find("accounts") != std::string::npos;
  }

  const std::filesystem::path journal = donationsFile.parent_path() / "tool-journal.plist";
};

TEST_F(DonateWordsTest, TakesNobodyElsesCardsUnlessTheOwnerInsists) {
  std::string book;
  for (int number = 1; number <= 500; ++number) {
    const std::string name = "Person" + std::to_string(number) + " Berg";
    book += cardText(name, {"EMAIL:p" + std::to_string(number) + "@example.org"});
  }
  const std::string all = file("book500.vcf", book);
  const std::string cards = cardText("Ann Berg", {"UID:one", "TEL:+49 30 1"}) +
                            cardText("Bo Lee", {"EMAIL:bo@example.org"});
  const std::string two = file("two.vcf", cards);
  const std::string nameless = file("nameless.vcf", cardText("", {"TEL:+49 30 2"}));
  const std::string company = file("company.vcf", cardText("Ann's", {"KIND:org", "TEL:+49 30 3"}));
  const std::string device = file("device.vcf", cardText("Ann's", {"KIND:device"}));
  const std::string ann = file("ann.vcf", cardText("ANN BERG", {}));
  startAgent();
  expect("donate " + all, 2,
         {"quenlet: usage 2: nothing was donated: there are 500 names, not one\n  Person1 Berg\n",
          "  Person10 Berg\n  … and 490 more\nhint: --only TEXT "});
  expect("donate " + two + " --dry-run", 2, {"2 names", "  Ann Berg\n  Bo Lee\nhint: "});
  expect("donate " + ann + " " + two, 2, {"2 names", "  ANN BERG\n  Bo Lee\nhint: "});
  expect("donate " + file("both.vcf", cardText("Ann Berg", {}) + cardText("", {"TEL:+49 30 4"})), 2,
         {"2 names", "  Ann Berg\n  +49 30 4\n"});
  expect("donate " + company, 2, {"1 card is not a person's\n  ", "line 4: a card of an organ"});
  expect("donate " + ann + " " + device, 2,
         {"1 card is not a person's\n  ANN BERG\n  Ann's (device)\n"});
  expect("donate " + all + " --only p501@", 1,
         {"no card's name, UID or e-mail address contains that"});
  expect("donate " + all + " --only person49", 2, {" 11 cards contain that", "  Person49 Berg\n"});
  expect("list", 0, {"There are no donations."});
  expect("donate " + ann + " " + nameless, 0, {"ann.vcf: 1 donated", "nameless.vcf: 1 donated"});
  expect("donate " + two + " --only ONE", 0, {"two.vcf: 2 donated as org.quenlet.file."});
  expect("donate " + two + " --only BO@", 0,
         {": 2 donated as", ", 2 removed: given before, but not now"});
  expect("donate " + two + " --all --bundle com.example.two", 0, {"4 donated as com.example.two"});
  expect("donate " + ann + " " + company + " --all --bundle b", 0,
         {"skipped a card: ", "ann.vcf: 1 don"});
  expect("donate " + company + " --all", 2,
         {"skipped a card: ", "nothing was donated: no card is a person's\n"});
  expect("forget b", 0);
  EXPECT_EQ(countDonations(), 8);
  file("two.vcf", cardText("Ann Berg", {"UID:one"}) + "BEGIN:VCARD\n");
  expect("donate " + two + " --only one", 1,
         {"skipped a card: ", "its earlier values stay", ": 1 donated as"});
}

TEST_F(DonateWordsTest, ReplacesAFileWholeCountsTruthfullyAndTakesBack) {
  const std::string path = file("Joan +12025550100.vcf",
                                cardText("Joan Ashwood", {"EMAIL:joan@example.org", "TEL:+49 30 1",
                                                          "TEL:+49 30 2", "UID:joan@example.org"}));
  startAgent();
  expect("undo", 1, {"this program has no donation to take back"});
  expect("donate '" + path + "' --expires 0", 2, {"above 0"});
  expect("donate '" + path + "'", 0, {": 4 donated as org.quenlet.file."});
  const std::string first = json();
  EXPECT_THAT(first, Not(HasSubstr("joan@example.org:")));
  EXPECT_TRUE(agent->says("\"donateMeCardValues:")) << "the log tells of it";
  EXPECT_FALSE(agent->says("12025550100") || agent->says("Joan"));

  writeFile(path, cardText("Joan Ashwood", {"EMAIL:joan@example.com", "TEL:no", "TEL:+49 30 1",
                                            "UID:joan@example.org"}));
  expect("donate '" + path + "'", 0,
         {": 3 donated as org.quenlet.file.", ", 1 removed: given before, but not now\n",
          "skipped 1 entry without a usable value: TEL in line 5\n"});
  expect("undo", 0, {"Took back the donation of 20", ": 3 values removed, 4 restored.\n"});
  EXPECT_EQ(json(), first);
  writeFile(path, cardText("Joan Ashwood", {"UID:joan@example.org"}) + "BEGIN:VCARD\r\n");
  expect("donate '" + path + "'", 1, {": 1 donated as org", "its earlier values stay"});
  EXPECT_EQ(countDonations(), 4);
  expect("undo", 0, {": 1 value removed, 1 restored.\n"});
  EXPECT_EQ(json(), first);
  writeFile(path, cardText("Joan Ashwood", {"EMAIL:joan@example.com", "TEL:no", "TEL:+49 30 1",
                                            "UID:joan@example.org"}));

  expect("donate '" + path + "' --bundle com.example.mail --cluster c", 0, {": 3 donated"});
  expect("reject-cluster c", 0);
  expect("donate '" + path + "'", 0, {": 0 donated", ", 3 left out: you rejected them, "});
  expect("undo", 0, {": 0 values removed, ", "2 former values do not come back: rejected since\n"});
}

TEST_F(DonateWordsTest, SaysBeforehandThatTheOwnCardHasAnotherName) {
  writeOwnersCard(cardText("Joan Ashwood", {}));
  const std::string path = file("robin.vcf", cardText("Robin Hartwell", {"EMAIL:r@example.org"}));
  const std::string joan = file("joan.vcf", cardText("JOAN ASHWOOD", {"EMAIL:j@example.org"}));
  const std::string said =
      "your own card says Joan Ashwood, not Robin Hartwell; these values will not show\n";
  expect("donate " + path, 2, {"quenlet: usage 2: " + said + "hint: --anyway donates them\n"});
  expect("donate " + joan, 3);
  expect("donate " + joan + " --dry-run", 0, {"org.quenlet.file."});
  EXPECT_FALSE(exists(journal)) << "nothing was donated";
  startAgent();
  expect("donate " + path, 2, {said});
  expect("list", 0, {"There are no donations."});
  expect("donate " + path + " --anyway", 0, {"quenlet: " + said, ": 2 donated"});
  expect("donate " + joan, 0, {": 2 donated"});
  expect("disable --yes", 0, {"undo can take nothing back", "in 30 seconds"});
  expect("enable", 0);
  expect("undo", 1);
  ASSERT_TRUE(eventually([&] { return quenlet("donate " + joan).code == 0; }));
  EXPECT_EQ(countDonations(), 4) << "the file kept its bundle";
  writeFile(journal, "damaged");
  expect("undo", 1, {"property-list-error"});
  expect("donate " + joan, 0, {"the journal of donations was damaged, and a copy of it was kept"});
  expect("undo", 0, {": 2 values removed"});
  EXPECT_THAT(card(), AllOf(HasSubstr("j@example.org"), Not(HasSubstr("r@example.org"))));
}

TEST_F(DonateWordsTest, AnExportBringsAllOfItToAnEmptyHome) {
  const std::filesystem::path feedback = "Library/Contacts/Feedback/feedback.plist";
  const std::string ann = file(
      "ann.vcf", cardText("Ann Berg", {"EMAIL:ann@example.org", "TEL:+49 30 1", "TEL:+49 30 2"}));
  const std::string gone = file("gone.vcf", cardText("", {"EMAIL:no@example.org", "TEL:+49 30 3"}));
  expect("export", 3, {"quenlet: ovaro.quenlet.service-error 1: "});
  writeOwnersCard(cardText("Ann Berg", {"EMAIL:own@example.org"}));
  startAgent();
  ASSERT_TRUE(eventually([&] { return hasReadAccounts(home); }));
  expect("account add --id work --username work@example.org", 0);
  expect("donate " + ann + " --cluster c", 0, {": 4 donated"});
  expect("donate " + gone + " --bundle com.example.gone --cluster gone", 0, {": 2 donated"});
  expect("reject-cluster gone", 0);
  expect("donate " + file("bo.vcf", cardText("Ann Berg", {"EMAIL:b@example.org"})), 0,
         {": 2 donated"});
  ASSERT_TRUE(eventually([this] { return countDonations() == 7; })) << json();
  const std::string backup = quenlet("export").out;
  const std::string exported = file("backup.plist", backup);
  const std::string cut = file("cut.plist", backup.substr(0, backup.size() / 2));
  const std::string before = json() + card();
  EXPECT_EQ(stopAgent(), 0);

  const std::filesystem::path other = temporary / "other";
  ::setenv("HOME", other.c_str(), 1);
  expect("import " + exported, 3, {"service-error 1: "});
  startAgent();
  ASSERT_TRUE(eventually([&] { return hasReadAccounts(other); }));
  const auto othersCard = other / "Library/Contacts/me.vcf";
  expect("import " + cut, 1, {"quenlet: ovaro.quenlet.property-list-error "});
  expect("import none.plist", 1, {"posix-error 2: "});
  EXPECT_EQ(countDonations(), 0);
  EXPECT_FALSE(exists(othersCard) || exists(other / feedback));
  expect("import " + exported, 0,
         {"Imported 7 donations, 2 decisions on values, 1 account and your own card.\n"});
  EXPECT_TRUE(eventually([&] { return json() + card() == before; })) << json() << card() << before;
  EXPECT_EQ(readFile(other / feedback), readFile(home / feedback));
  EXPECT_EQ(readFile(othersCard), readFile(ownersCard));
  EXPECT_EQ(quenlet("account list").out,
            run({"env", "HOME=" + home.string(), bin / "quenlet", "account", "list"}).out);

  writeFile(othersCard, cardText("Ann Berg", {}));
  expect("account change --id work --inactive", 0);
  expect("import " + exported, 2,
         {"nothing was imported: something else is in the place of\n  ", "  your own card\n",
          "  the account work\nhint: --replace "});
  EXPECT_EQ(readFile(othersCard), cardText("Ann Berg", {}));
  expect("import " + exported + " --replace", 0,
         {"Overwritten:\n  the donation email:work\n  your own card\n",
          "0 decisions on values, 1 account and your own", "kept: " + othersCard.string()});
  EXPECT_EQ(readFile(othersCard.string() + ".former-1"), cardText("Ann Berg", {}));
  EXPECT_EQ(readFile(othersCard), readFile(ownersCard));
  // The key came along: the same file replaces what it gave in the other home.
  writeFile(ann, cardText("Ann Berg", {"EMAIL:ann@example.com"}));
  expect("donate " + ann, 0, {": 2 donated as", ", 2 removed: given before, but not now\n"});
  expect("unreject no@example.org", 0);
  expect("donate " + gone + " --bundle com.example.own", 0, {": 1 donated"});
  expect("import " + exported, 2, {", whose value the export has as rejected\n"});
  expect("export --output " + cut, 1, {"hint: --force replaces it\n"});
  expect("export --output " + cut + " --force", 0, {"Wrote " + cut});
  EXPECT_EQ(modeOf(cut), 0600U);
}

}  // namespace
}  // namespace quenlet
