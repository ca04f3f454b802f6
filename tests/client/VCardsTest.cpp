#include "quenlet/VCards.h"

#include "client/Pseudonyms.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

TEST(VCardsTest, MakesDonationsOfAFileAndTellsWhatItLeavesOut) {
  const TemporaryDirectory directory;
  const std::string card = "BEGIN:VCARD\nVERSION:4.0\n";
  directory.write(
      "mail.vcf",
      card +
          "UID:URN:uuid:4FBE8971-0d1f-4f35-9a52-6d0f3f6b1c01\nN:Berg;Ann;;;"
          "\nEMAIL:a@x.org\nEMAIL:b@x.org\nTEL:none\nTEL;TYPE=cell:+4930123456\nEND:VCARD\n" +
          card + "ADR;TYPE=home:;;Weg 1;Ulm;;89073;\nPHOTO:data:,x\nEND:VCARD\n" + card);
  const DonationTerms terms{"a:b", "cluster", Date(1), Date(3)};
  const auto donation = [&](decltype(Donation::content) content, const std::string& identifier) {
    return Donation{std::move(content), "a:b", identifier, "cluster", Date(1), Date(3)};
  };
  const std::string uid = "a%3Ab:URN%3Auuid%3A4FBE8971-0d1f-4f35-9a52-6d0f3f6b1c01:";
  const std::string digest = "a%3Ab:" + Pseudonyms::withoutSecret().of("mail.vcf") + ":";
  const auto read = readVCards((directory / "mail.vcf").native(), terms);
  ASSERT_TRUE(read.ok());
  EXPECT_EQ(
      read.value().donations,
      (std::vector{
          donation(Name{.givenName = "Ann", .familyName = "Berg"}, uid + "name"),
          donation(Email{"a@x.org", ""}, uid + "email:1"),
          donation(Email{"b@x.org", ""}, uid + "email:2"),
          donation(Phone{"+4930123456", "cell"}, uid + "phone:1"),
          donation(Postal{{.street = "Weg 1", .city = "Ulm", .postalCode = "89073"}, {}, "home"},
                   digest + "2:address:1"),
          donation(Image{"x"}, digest + "2:image")}));
  ASSERT_EQ(read.value().failures.size(), 1);
  EXPECT_NE(read.value().failures[0]->description().find("mail.vcf: line"), std::string::npos);
  EXPECT_EQ(read.value().skippedEntries, 1);
  EXPECT_FALSE(readVCards((directory / "none.vcf").native(), terms).ok());
}

// A log that holds an identifier must not tell whose it is.
TEST(VCardsTest, LetsNoPersonalUIDIntoIdentifiers) {
  const TemporaryDirectory directory;
  const std::string file = directory / "Joan +12025550100.vcf";
  std::set<std::string> identifiers;
  for (const char* uid : {"joan@example.org", "+1 202 555 0100", "12025550100", "joan-ashwood", "7",
                          "uuid:", "4fbe8971-0d1f-4f35-9a52-6d0f3f6b1c0g",
                          "4fbe8971-0d1f-4f35-9a52-6d0f3f6b1c012", ""}) {
    writeFile(file, std::string("BEGIN:VCARD\nUID:") + uid + "\nFN:Ann\nEND:VCARD\n");
    const auto read = readVCards(file, {.bundleIdentifier = "app"});
    ASSERT_TRUE(read.ok());
    const std::string& identifier = read.value().donations.at(0).donationIdentifier;
    EXPECT_EQ(identifier.find_first_not_of("0123456789abcdef", 4), 16U) << identifier;
    identifiers.insert(identifier);
  }
  EXPECT_EQ(identifiers.size(), 9U) << "each has one of its own";
}

}  // namespace
}  // namespace quenlet
