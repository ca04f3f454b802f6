#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using namespace testing;

// The words that take values away and give them back, as their owner types them.
class RejectWordsTest : public ProcessTest {
 protected:
  // The files below the home that hold this text.
  std::string filesWith(const std::string& text) {
    return run({"grep", "-rlaF", "--", text, home}).out;
  }
  // The program at a terminal, where the owner answers each question with `line`.
  Ran atTerminal(const std::string& line, std::vector<std::string> words) {
    const std::string program = goldenFile("tests/process/at-terminal.py");
    std::vector<std::string> command{"python3", "-c", program, line, bin / "quenlet"};
    command.insert(command.end(), words.begin(), words.end());
    return run(command);
  }

  void linkDonationsElsewhere() const {
    std::filesystem::rename(donationsFile, elsewhere);
    std::filesystem::create_symlink(elsewhere, donationsFile);
  }

  const std::filesystem::path elsewhere = home / "elsewhere.plist";
  const std::string uid = "0e1c9a52-7a44-4c39-8a0f-d7a0f6f3c7a2";
  const std::string mail = "com.example.mail:" + uid + ":";
  const std::vector<std::string> robin = {"EMAIL;TYPE=home:robin@example.org",
                                          "EMAIL;TYPE=work:Robin@Example.org",
                                          "TEL:+49 (30) 1234567",
                                          "ADR:;;12 Larch Lane;Springfield;;;",
                                          "PHOTO;ENCODING=b:R0lGODlhAQABAAAAADs=",
                                          "UID:" + uid};
};

TEST_F(RejectWordsTest, RejectsByValueNumberOrIdentifierAndTakesItBack) {
  startAgent();
  donate("com.example.mail", "Robin Berg", robin);
  donate("com.example.phone", "Robin Berg", robin);
  expect("rejections", 0, {"Nothing is rejected.\n"});
  expect("reject 3", 1, {"quenlet: stale-number 1: ", "hint: quenlet list"});
  expect("reject joan@example.org", 1, {"quenlet: no-match 1: ", "hint: quenlet list"});
  expect("reject " + mail + "image", 1,
         {"quenlet: not-possible 1: an image", "hint: quenlet remove " + mail + "image",
          "quenlet forget com.example.mail\n"});
  expect("reject mailto:ROBIN@example.org", 0,
         {"Rejected the e-mail address robin@example.org: 4 donations, from\n"
          "com.example.mail and com.example.phone.\n"});
  expect("reject com.example.phone:" + uid + ":phone:1", 0,
         {"the phone number +49 (30) 1234567: 2 donations"});
  expect("reject 3", 1, {"stale-number"});
  expect("list", 0);
  expect("reject 2", 0, {"the postal address 12 Larch Lane, Springfield: 2 donations"});
  expect("reject 99", 1, {"no-match"});
  expect("reject-cluster none", 1, {"no-match"});
  expect("unreject joan@example.org", 1, {"quenlet: no-match 1: ", "hint: quenlet rejections"});
  expect("unreject 2", 1, {"stale-number"});
  expect("unreject", 2, {"usage 2"});
  expect("unreject --all", 2, {"usage 2", "hint: --yes"});
  expect("clear-rejections", 0, {"nothing has changed, and 3 values stay"});
  expect("rejections", 0, {"1  e-mail   robin@example.org", "3  address"});
  expect("rejections --json", 0,
         {R"([{"kind":"emailAddress","value":"robin@example.org","status":"rejected"},)"});
  expect("unreject 2", 0, {"Not rejected any more: the phone number +49 (30) 1234567.\n"});
  expect("unreject Robin@Example.ORG", 0, {"the e-mail address robin@example.org"});
  EXPECT_THAT(atTerminal("n", {"unreject", "--all"}).out, HasSubstr("Nothing has changed."));
  EXPECT_THAT(quenlet("rejections").out, HasSubstr("1  address"));
  EXPECT_EQ(atTerminal("y", {"unreject", "--all"}).code, 0);
  EXPECT_EQ(quenlet("rejections").out, "Nothing is rejected.\n");
  expect("remove 'Robin Berg' nobody", 1, {"no-match"});
  expect("remove 'Robin Berg' " + mail + "name 1234", 1, {"no-match"});
  expect("remove 'robin berg' " + mail + "name", 0,
         {"Removed 2 donations, from com.example.mail and com.example.phone.\n"});
  expect("forget com.example.shop", 1,
         {"no-match", "hint: the donors: com.example.mail and com.example.phone"});
  expect("forget com.example.mail", 0, {"Removed 1 donation, from com.example.mail.\n"});
  EXPECT_EQ(countDonations(), 1);
}

TEST_F(RejectWordsTest, RejectThenDonateThenUnrejectThenDonateGivesTheSameCard) {
  startAgent();
  donate("com.example.mail", "Robin Berg", robin);
  const std::string before = quenlet("card --format vcard").out;
  const std::string clustered = temporary / "clustered.vcf";
  writeFile(clustered, cardText("Robin Berg", robin));
  expect("donate " + clustered + " --bundle com.example.mail --cluster c", 0);
  expect("reject-cluster c", 0,
         {"the image (14 bytes, GIF): 1 donation", "robin@example.org: 2 donations"});
  donate("com.example.mail", "Robin Berg", robin);
  EXPECT_EQ(countDonations(), 0);
  EXPECT_EQ(quenlet("unreject --all --yes").code, 0);
  // The agent hears of the file's change beside its requests.
  EXPECT_TRUE(eventually([&] {
    donate("com.example.mail", "Robin Berg", robin);
    return quenlet("card --format vcard").out == before;
  })) << before;
}

TEST_F(RejectWordsTest, DisableLeavesNoValueBelowTheHomeOnceNoAgentRuns) {
  startAgent();
  expect("account add --id work --username anna@example.com", 0);
  expect("disable", 2, {"1 from your accounts", "The agent deletes them", "hint: --yes"});
  donate("com.example.mail", "Robin Berg", robin);
  EXPECT_THAT(
      atTerminal("", {"disable"}).out,
      AllOf(HasSubstr("This deletes 7 donations"), HasSubstr("6 from com.example.mail, who"),
            HasSubstr("quenlet export"), HasSubstr("Nothing has changed.")));
  EXPECT_EQ(countDonations(), 7);
  EXPECT_EQ(stopAgent(), 0);
  linkDonationsElsewhere();
  for (const char* name : {"donations.plist.damaged-7", ".donations.plist.quenlet-0123456789abcdef",
                           "tool-journal.plist.damaged-1"}) {
    std::filesystem::copy_file(elsewhere, donationsFile.parent_path() / name);
  }
  const std::filesystem::path page = temporary / "quenlet/pages/card.html";
  writeFile(page, "12 Larch Lane");
  EXPECT_NE(filesWith("Larch"), "");
  expect("disable", 2,
         {"No agent runs: they are deleted at once",
          "first start the agent and run quenlet export --output FILE.\n", "usage 2"});
  expect("disable --yes", 0, {"all stored donations are deleted"});
  expect("disable", 0, {"off already"});
  expect("status", 3, {"disabled"});
  EXPECT_EQ(filesWith("Larch"), "");
  EXPECT_FALSE(std::filesystem::exists(page));
  EXPECT_EQ(filesWith("robin@example.org"), "");
  EXPECT_EQ(filesWith("R0lGODlhAQABAAAAADs"), "");
  expect("enable", 0, {"the next one reads your accounts"});
  startAgent();
  EXPECT_TRUE(eventually([this] { return cardHas("anna@example.com"); }));
}

TEST_F(RejectWordsTest, ResetRemovesAllButWhatIsTheOwners) {
  writeOwnersCard(cardText("Robin Berg", {}));
  startAgent();
  donate("com.example.mail", "Robin Berg", robin);
  linkDonationsElsewhere();
  expect("account add --id work", 0);
  expect("reject '+493012 34567'", 0);
  expect("reset --yes", 1, {"not-possible", "hint: stop it first: systemctl --user stop"});
  expect("disable --yes", 0, {"first run quenlet export --output FILE.\n", "in 30 seconds"});
  EXPECT_TRUE(exists(elsewhere)) << "the agent keeps its file until it deletes the donations";
  EXPECT_EQ(stopAgent(), 0);
  const std::string library = home / "Library";
  writeFile(library + "/Contacts/Feedback/feedback.plist.damaged-1", "Larch");
  expect("paths --json", 0, {"quenlet/shown-donations\"", "/ovaro.quenlet.agent\""});
  expect("paths", 0, {"~/Library/Contacts/Feedback/feedback.plist", "in 2 files"});
  EXPECT_THAT(quenlet("paths").out, testing::HasSubstr("your own card\n  ~/"));
  expect("paths --json", 0,
         {"\"path\":\"" + ownersCard.string() +
          R"(","purpose":"your own card","keeper":"owner","exists":true,"files":1,)"});
  expect("reset", 2, {"  ~/Library/Contacts/Donations/donations.plist\n", "hint: --yes"});
  EXPECT_NE(filesWith("Larch"), "");
  expect("reset --yes", 0, {"feedback.plist.damaged-1", "Donations were off"});
  expect("reset --yes", 0, {"Nothing is stored.\n"});
  expect("status", 3, {"enabled"});
  expect("rejections", 0, {"Nothing is rejected."});
  expect("account list", 0, {"work"});
  const std::string left = "find \"$0\" -type f ! -empty | sort";
  EXPECT_EQ(run({"/bin/sh", "-c", left, library}).out,
            library + "/Accounts/work.plist\n" + ownersCard.string() + "\n");
  EXPECT_FALSE(exists(elsewhere));
}

}  // namespace
}  // namespace quenlet
