#include "quenlet/VCards.h"

#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

TEST(VCardsTest, MakesDonationsOfAFileAndTellsWhatItLeavesOut) {
  const TemporaryDirectory directory;
  const std::string card = "BEGIN:VCARD\nVERSION:4.0\n";
  directory.write("mail.vcf",
                  card + "UID:7\nN:Berg;Ann;;;\nTEL:none\nTEL;TYPE=cell:+4930123456\nEND:VCARD\n" +
                      card + "ADR;TYPE=home:;;Weg 1;Ulm;;89073;\nEND:VCARD\n" + card);
  const DonationTerms terms{"app", "cluster", Date(1), Date(3)};
  const auto donation = [&](decltype(Donation::content) content, const char* identifier) {
    return Donation{std::move(content), "app", identifier, "cluster", Date(1), Date(3)};
  };
  const auto read = readVCards((directory / "mail.vcf").native(), terms);
  ASSERT_TRUE(read.ok());
  EXPECT_EQ(
      read.value().donations,
      (std::vector{
          donation(Name{.givenName = "Ann", .familyName = "Berg"}, "app:7:name"),
          donation(Phone{"+4930123456", "cell"}, "app:7:phone:1"),
          donation(Postal{{.street = "Weg 1", .city = "Ulm", .postalCode = "89073"}, {}, "home"},
                   "app:mail.vcf:2:address:1")}));
  ASSERT_EQ(read.value().failures.size(), 1);
  EXPECT_NE(read.value().failures[0]->description().find("mail.vcf: line"), std::string::npos);
  EXPECT_EQ(read.value().skippedEntries, 1);
  EXPECT_FALSE(readVCards((directory / "none.vcf").native(), terms).ok());
}

}  // namespace
}  // namespace quenlet
