#include "tools/owner/DonationStates.h"

#include "tests/support/DonationFactory.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

using Names = PersonNameComponents;

const Names robin{.givenName = "Robin", .familyName = "Hartwell"};
const Names jo{.namePrefix = "Dr.", .givenName = "Jo", .familyName = "Hartwell"};

// "number state other: sentence", a line for each donation.
std::string told(const DonationValues& donations, const OwnCard& ownCard) {
  std::string text;
  for (const auto& stated : statesOf(listOf(donations), ownCard)) {
    EXPECT_EQ(stated.donation, donations[stated.number - 1]);
    EXPECT_EQ(stated.other, stated.otherNumber ? donations[stated.otherNumber - 1] : nullptr);
    text += std::to_string(stated.number) + " " + wordFor(stated.state) + " " +
            std::to_string(stated.otherNumber) +
            (stated.because.empty() ? "" : ": " + stated.because) + "\n";
  }
  return text;
}

OwnCard cardOf(std::optional<Names> name, std::vector<std::string> addresses = {}) {
  return {.name = std::move(name), .emailAddresses = std::move(addresses)};
}

TEST(DonationStatesTest, SayInASentenceWhyAValueIsNotOnTheCard) {
  const OwnCard damaged{.fault = makeError("domain", 1, "line 1")};
  const std::tuple<const char*, OwnCard, DonationValues> rows[] = {
      {"a silenced app, named three times", cardOf(robin),
       DonationValues{phone("+1 202 555 0100", from("org.shop", "1")),
                      named(jo, from("org.shop", "2")), named(Names{}, from("org.shop", "3")),
                      phone("+1 202 555 0101", from("org.mail", "4"))}},
      {"a silenced cluster", cardOf(robin),
       DonationValues{named({.givenName = "Jo"}, from("org.shop", "1", "c")),
                      email("jo@x.org", from("org.mail", "2", "c"))}},
      {"texts that look alike", cardOf(Names{.givenName = "Robin Hartwell"}),
       DonationValues{named(robin, from("org.shop", "1"))}},
      {"an own card without a name", cardOf(Names{}),
       DonationValues{named(robin, from("a", "1")), named({.nickname = "Rob"}, from("b", "2"))}},
      {"a name without what decides", cardOf(robin),
       DonationValues{named({.nickname = "Rob"}, from("b", "1"))}},
      {"names that disagree", OwnCard(),
       DonationValues{named(robin, from("a", "1")),
                      named({.givenName = "ROBIN", .familyName = "hartwell"}, from("b", "2")),
                      named(jo, from("c", "3")), named({.givenName = "Eve"}, from("d", "4")),
                      image("x", from("d", "5"))}},
      {"names that disagree, and a damaged card", damaged,
       DonationValues{named(robin, from("a", "1")), named(jo, from("b", "2"))}},
      {"what the owner's card has", cardOf(robin, {"rob@gmail.com"}),
       DonationValues{named(robin, from("a", "1")), email("rob@gmail.com", from("a", "2")),
                      email("rob@googlemail.com", from("b", "3"))}},
      {"entries that others gave", OwnCard(),
       DonationValues{email("a@x", from("a", "1")), phone("+1 202 555 0100", from("a", "2")),
                      email("A@x", from("b", "3")), phone("+1 202 555 0100", from("b", "4")),
                      phone("+12025550100", from("b", "5")),
                      postal({.country = "DE"}, from("b", "6")),
                      postal({.country = "DE"}, from("b", "7")), email("a@X", from("c", "8"))}},
      {"names and images that others gave", OwnCard(),
       DonationValues{
           named({.givenName = "Robin", .familyName = "Hartwell", .nickname = "R"}, from("a", "1")),
           named(robin, from("b", "2")), image("x", from("a", "3")), named(robin, from("c", "4")),
           image("y", from("b", "5")), image("x", from("c", "6"))}},
      {"a name that is taken over part by part", OwnCard(),
       DonationValues{named({.namePrefix = "Dr.", .nickname = "A"}, from("a", "1")),
                      named({.namePrefix = "Prof."}, from("b", "2")),
                      named({.nickname = "B"}, from("c", "3"))}},
      {"a name without parts", OwnCard(), DonationValues{named(Names{}, from("a", "1"))}},
  };
  GoldenParts sentences("tests/tools/owner/states.txt");
  for (const auto& [name, ownCard, donations] : rows) {
    EXPECT_EQ(told(donations, ownCard), sentences.take(name)) << name;
  }
}

TEST(OwnCardTest, IsReadAsTheAgentReadsIt) {
  const TemporaryDirectory directory;
  const std::filesystem::path path = directory / "me.vcf";
  OwnCard card = OwnCard::readFrom(path);
  EXPECT_EQ(card.contact, nullptr);
  EXPECT_EQ(card.name, std::nullopt);
  EXPECT_EQ(card.fault, nullptr) << "a missing card is no fault";

  directory.write("me.vcf",
                  "BEGIN:VCARD\nVERSION:4.0\nN:Hartwell;Robin;Q.;Dr.;\nEMAIL:Rob@GMail.com\n"
                  "EMAIL:mailto:rob@gmail.com\nTEL:none\nTEL:+1 202 555 0100\nEND:VCARD\n");
  card = OwnCard::readFrom(path);
  EXPECT_EQ(card.name, robin) << "without what decides nothing";
  EXPECT_EQ(card.emailAddresses, std::vector<std::string>{"rob@gmail.com"});
  EXPECT_EQ(card.contact->namePrefix(), "Dr.");
  EXPECT_EQ(card.contact->phoneNumbers().size(), 1U);
  EXPECT_EQ(card.skipped, (std::vector<SkippedEntry>{{"TEL", 6}}));

  directory.write("me.vcf", "BEGIN:VCARD\nVERSION:9\nEND:VCARD\n");
  card = OwnCard::readFrom(path);
  EXPECT_EQ(card.name, std::nullopt) << "as without a card";
  EXPECT_NE(card.fault, nullptr);
}

}  // namespace
}  // namespace quenlet
