#include <stdlib.h>
#include <time.h>

#include <sstream>

#include "client/CardDonor.h"
#include "client/CardFile.h"
#include "tests/platform/extensions/HostFixture.h"

namespace quenlet {
namespace {

// The programs that were built, started by a host. HOME is the test's directory.
class VCardExtensionTest : public HostFixture {
 protected:
  VCardExtensionTest() { ::setenv("HOME", root.c_str(), 1); }

  // Installs a copy that nobody else can write, whatever the builder's umask.
  void installProgram(const std::string& bundle, const std::string& name) {
    const auto built = std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
    std::filesystem::copy_file(built, root / name);
    std::filesystem::permissions(root / name, std::filesystem::perms(0755));
    install(bundle, root / name);
    EXPECT_EQ(
        WEXITSTATUS(std::system(((root / name).native() + " </dev/null 2>/dev/null").c_str())), 2);
    makeHost({.idleSeconds = 0.1});
  }
  void writeCard(const std::string& name, const std::string& lines) {
    write(cards / name, "BEGIN:VCARD\nVERSION:4.0\n" + lines + "END:VCARD\n");
  }
  // What is said of the card's values: "kept" for about 30 days, "gone" or the error.
  std::string renewed() {
    for (const DonationValuePtr& value : donated) renew(donor, value);
    std::string all;
    std::istringstream words(takeNotes());
    const long now = ::time(nullptr);
    expectNothingLeft();  // another run sees the cards anew
    for (std::string word; words >> word;) {
      const long seconds = ::atol(word.c_str());
      const bool isKept = std::abs(seconds - now - 30 * 86400) < 600;
      all += seconds == 0 ? word + " " : isKept ? "kept " : seconds < now ? "gone " : "odd ";
    }
    return all;
  }
  std::string redonated(const DonorPtr& asked) {
    testing::internal::CaptureStderr();
    asked->redonateAllValuesWithReason(1);
    runUntil([turn = 0]() mutable { return ++turn > 1; });
    notes.clear();
    renew(asked);  // answered after the re-donation
    takeNotes();
    return testing::internal::GetCapturedStderr() + agent->takeCalls();
  }

  const std::filesystem::path cards = "Library/Contacts/Cards";
  DonorPtr donor;
  DonationValues donated;
};

TEST_F(VCardExtensionTest, DonatesCardsAndRenewsWhatTheyStillSay) {
  installProgram("org.quenlet.vcard-extension", "quenlet-vcard-extension");
  donor = load("org.quenlet.vcard-extension");
  ASSERT_TRUE(donor);
  EXPECT_EQ(redonated(donor), "");
  writeCard("ann.vcf", "UID:1\nFN:Ann Berg\nEMAIL:ann@example.org\nTEL:+49 30 1234567\n");
  writeCard("work.vcf", "FN:Ann Berg\nEMAIL:ann@work.example\n");
  write(cards / "bad.vcf", "no card");
  write(cards / "notes.txt", "no card");
  EXPECT_EQ(redonated(donor), "donate 5;");

  CardDonor expected({"org.quenlet.vcard-extension", std::nullopt, Date(1), Date(2)});
  expected.addFile(CardFile::read(root / cards / "ann.vcf").left(), "ann.vcf");
  donated = expected.donations();
  EXPECT_EQ(renewed(), "kept kept kept ");
  writeCard("ann.vcf", "UID:1\nFN:Ann Berg\nEMAIL:ann@new.example\nTEL:+49 30 1234567\n");
  EXPECT_EQ(renewed(), "kept org.quenlet.vcard-extension:1 kept ") << "the bad card may hold it";
  std::filesystem::remove(root / cards / "bad.vcf");
  EXPECT_EQ(renewed(), "kept gone kept ");
  std::filesystem::remove_all(root / cards);
  EXPECT_EQ(renewed(), "gone gone gone ");
  expectNothingLeft();
}

TEST_F(VCardExtensionTest, DonatesNothingForAnotherBundleThanItsOwn) {
  installProgram("org.example.other", "quenlet-vcard-extension");
  writeCard("ann.vcf", "FN:Ann Berg\nEMAIL:ann@example.org\n");
  EXPECT_EQ(redonated(load("org.example.other")),
            "quenlet: extension org.example.other: it donates for another bundle than its own\n");
}

TEST_F(VCardExtensionTest, RunsTheExtensionOfTheGuide) {
  installProgram("com.example.mail", "guide-extension");
  donor = load("com.example.mail");
  ASSERT_TRUE(donor);
  EXPECT_EQ(redonated(donor), "");
  donated = {email("ann@example.org")};
  EXPECT_EQ(renewed(), "gone ");
}

}  // namespace
}  // namespace quenlet
