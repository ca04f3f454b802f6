#include "tools/owner/DonationJournal.h"

#include <gmock/gmock.h>

#include "tests/support/DonationFactory.h"
#include "tests/support/FileFixture.h"

namespace quenlet {
namespace {

class DonationJournalTest : public FileFixture {
 protected:
  std::filesystem::path journalFile = temporary / "Donations" / DonationJournal::fileName;
  DonationJournal journal{
      temporary / "Donations", std::make_shared<PosixDataProxy>(), {.entries = 4, .bytes = 9000}};

  const std::string key = "abcdefghijklmnop";

  // Notes a donation of one file and gives its number.
  std::int64_t add(const DonationValues& donated, const DonationValues& replaced = {}) {
    const auto added = journal.add({.when = Date(0.25),
                                    .files = {{"0123", "app", donated, {{"TEL", 7}, {"", 9}}}},
                                    .replaced = replaced},
                                   key);
    return added.ok() ? added.value().number : -1;
  }
  // "number:donated/replaced/left out" of each donation, or the error.
  std::string kept() {
    const auto entries = journal.entries();
    if (!entries.ok()) return entries.error()->domain();
    std::string text;
    for (const JournalEntry& entry : entries.value()) {
      text += std::to_string(entry.number) + ":";
      for (const DonatedFile& part : entry.files) text += identifiersOf(part.donated);
      text += "/" + identifiersOf(entry.replaced) + "/";
      for (const std::string& identifier : entry.leftOut) text += identifier + ",";
      text += entry.kept == JournalEntry::Kept::all                  ? " "
              : entry.kept == JournalEntry::Kept::allButFormerImages ? "-images "
                                                                     : "-all ";
    }
    return text;
  }
};

TEST_F(DonationJournalTest, ReadsBackWhatWasNoted) {
  EXPECT_EQ(kept(), "");
  const auto mail = email("ann@example.org", from("app", "a"));
  EXPECT_EQ(add({mail, image("GIF89a", from("app", "i"))}, {image("PNG", from("app", "i"))}), 1);
  EXPECT_EQ(add({phone("+49 30 1234567", from("app", "p"))}), 2);
  EXPECT_EQ(journal.setLeftOut(2, {"p"}), nullptr);
  EXPECT_EQ(journal.setLeftOut(3, {"nobody"}), nullptr);
  EXPECT_EQ(kept(), "1:a i/i/ 2:p//p, ");
  const JournalEntry first = journal.entries().value().at(0);
  EXPECT_EQ(first.when, Date(0.25));
  EXPECT_EQ(*first.files[0].donated[0], *mail);
  EXPECT_EQ(*first.files[0].donated[1], *image("", from("app", "i")));
  EXPECT_EQ(*first.replaced[0], *image("PNG", from("app", "i")));
  EXPECT_EQ(first.files[0].skipped, (std::vector<SkippedEntry>{{"TEL", 7}, {"", 9}}));
  EXPECT_EQ(first.files[0].pseudonym + first.files[0].bundleIdentifier, "0123app");
  EXPECT_EQ(journal.remove(1), nullptr);
  EXPECT_EQ(kept(), "2:p//p, ");
  EXPECT_EQ(journal.erase(), nullptr);
  EXPECT_EQ(kept(), "");
  EXPECT_EQ(journal.knownKey().value(), key);
  EXPECT_EQ(readFile(journalFile).find("ann@"), std::string::npos);
  writeFile(journalFile, "ann@example.org");
  EXPECT_EQ(journal.erase(), nullptr);
  EXPECT_FALSE(std::filesystem::exists(journalFile));
  EXPECT_EQ(journal.erase(), nullptr) << "the file is already gone";
}

TEST_F(DonationJournalTest, ForgetsTheOldestOfTooManyAndWhatIsTooLarge) {
  for (int count = 0; count < 6; ++count) add({email("a@example.org", from("app", "e"))});
  EXPECT_EQ(kept(), "3:e// 4:e// 5:e// 6:e// ");

  const auto large = [](const char* identifier) {
    return image(std::string(2000, 'x'), from("app", identifier));
  };
  EXPECT_EQ(journal.erase(), nullptr);
  add({large("i")}, {large("b1")});
  add({}, {large("b2")});
  EXPECT_EQ(kept(), "1:i/b1/ 2:/b2/ ");
  add({}, {large("b3")});
  EXPECT_EQ(kept(), "2:/b2/ 3:/b3/ ");
  add({}, {large("b4"), email("a@example.org", from("app", "e")), large("b5"), large("b6")});
  EXPECT_EQ(kept(), "2:/b2/ 3:/b3/ 4:/e/-images ");
  EXPECT_EQ(add(DonationValues(15, email(std::string(500, 'x'), from("app", "l")))), 5);
  EXPECT_EQ(journal.setLeftOut(5, {"l"}), nullptr);
  EXPECT_EQ(kept(), "2:/b2/ 3:/b3/ 4:/e/-images 5://-all ");
  EXPECT_LE(std::filesystem::file_size(journalFile), 9000U);
}

TEST_F(DonationJournalTest, KeepsItsKeyAndTakesOverAnotherOnlyBeforeTheFirstDonation) {
  EXPECT_EQ(journal.knownKey().value(), std::nullopt);
  EXPECT_FALSE(std::filesystem::exists(journalFile.parent_path())) << "a look creates nothing";
  EXPECT_NE(DonationJournal::newKey(), DonationJournal::newKey());
  EXPECT_TRUE(journal.setKey("0123456789abcdef").value());
  EXPECT_EQ(journal.knownKey().value(), "0123456789abcdef");
  EXPECT_EQ(add({email("a@example.org")}), -1) << "it was made under another key";
  EXPECT_TRUE(journal.setKey(key).value());
  EXPECT_EQ(add({email("a@example.org")}), 1);
  EXPECT_FALSE(journal.setKey("0123456789abcdef").value());
  EXPECT_EQ(journal.knownKey().value(), key);
}

TEST_F(DonationJournalTest, ADamagedJournalIsAnErrorAndIsKeptBesideANewOne) {
  const std::string entry =
      "<dict><key>number</key><integer>4</integer><key>when</key><real>1</real>"
      "<key>files</key><array/><key>replaced</key><array/><key>leftOut</key><array/>"
      "<key>kept</key><string>";
  const std::string start = "<plist version=\"1.0\"><dict><key>donations</key>";
  const std::string end = "</dict></plist>";
  const std::pair<const char*, std::string> rows[] = {
      {"no property list", "journal"},
      {"no list of donations", start + "<string>none</string>" + end},
      {"a number for a donation", start + "<array><integer>4</integer></array>" + end},
      {"an unknown extent", start + "<array>" + entry + "some</string></dict></array>" + end},
  };
  for (const auto& [name, bytes] : rows) {
    SCOPED_TRACE(name);
    std::filesystem::remove_all(journalFile.parent_path());
    writeFile(journalFile, bytes);
    EXPECT_EQ(kept(), PropertyListErrorDomain);
    EXPECT_GT(add({email("a@example.org", from("app", "e"))}), 0);
    EXPECT_EQ(readFile(journalFile.string() + ".damaged-1"), bytes);
    EXPECT_THAT(kept(), testing::EndsWith(":e// "));
  }
  writeFile(journalFile, start + "<array>" + entry + "all</string></dict></array>" + end);
  EXPECT_EQ(kept().substr(0, 2), "4:");
}

}  // namespace
}  // namespace quenlet
