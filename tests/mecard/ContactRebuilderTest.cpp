#include "mecard/ContactRebuilder.h"

#include <gtest/gtest.h>

#include "mecard/CollectedSuppressionResult.h"
#include "mecard/ContactBuilder.h"
#include "mecard/SuppressionNameEquivalence.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

using Status = NameSuppressionStatus;

const PersonNameComponents annLee{.givenName = "Ann", .familyName = "Lee"};

Contact cardOf(const DonationValues& donations) {
  ContactBuilder builder;
  for (const auto& donation : donations) builder.addWithDonatedValue(donation);
  const Contact card = builder.build();
  EXPECT_EQ(builder.build(), card);
  return card;
}

// "label=value<donation" for each entry, in order.
template <typename T, typename Text>
std::string described(const LabeledValues<T>& entries, Text text) {
  std::string all;
  for (const auto& entry : entries) {
    all += entry->label + "=" + text(entry->value) + "<" +
           entry->storeInfo.valueOrigin->donationIdentifier + " ";
  }
  return all;
}

TEST(SuppressionNameEquivalenceTest, ComparesGivenAndFamilyNameButForCase) {
  const struct {
    PersonNameComponents a;
    PersonNameComponents b;
    bool equivalent;
  } rows[] = {
      {annLee, {.namePrefix = "Dr.", .givenName = "ANN", .familyName = "lee"}, true},
      {{.givenName = "\u00c9va"}, {.givenName = "e\u0301va"}, true},
      {annLee, {.givenName = "Ann", .middleName = "B.", .familyName = "Lee"}, true},
      {annLee, {.givenName = "Ann"}, false},
      {{.familyName = "Lee"}, {.familyName = "Li"}, false},
      {{.givenName = ""}, {}, false},
      {{.givenName = "Ann "}, {.givenName = "Ann"}, false},
      {{.nickname = "x"}, {}, true},
  };
  for (const auto& [a, b, equivalent] : rows) {
    EXPECT_EQ(SuppressionNameEquivalence::areEquivalent(a, b), equivalent);
    EXPECT_EQ(SuppressionNameEquivalence::areEquivalent(b, a), equivalent);
  }
}

TEST(CollectedSuppressionResultTest, LearnsFromNamesInOrder) {
  const DonationValuePtr ann = named({.givenName = "Ann"});
  const DonationValuePtr sameAnn = named({.givenName = "aNN", .nameSuffix = "Jr."});
  const DonationValuePtr bob = named({.givenName = "Bob"});
  const Status one{Status::OneDonation{ann->keys().name}};
  const Status different{Status::DifferentDonations{}};
  const struct {
    DonationValues donations;
    Status expected;
  } rows[] = {
      {{email("a@x")}, Status{Status::None{}}},
      {{ann, email("a@x"), sameAnn}, one},
      {{sameAnn, ann, bob}, different},
      {{ann, bob, ann}, different},
      {{named({})}, Status{Status::OneDonation{}}},
  };
  for (const auto& row : rows) {
    CollectedSuppressionResult result(std::nullopt);
    for (const auto& donation : row.donations) result.collect(*donation);
    EXPECT_EQ(result.nameStatus(), row.expected);
    EXPECT_EQ(result.keeps(*ann), row.expected != different);
    EXPECT_TRUE(result.keeps(*email("a@x")));
  }
}

TEST(ContactRebuilderTest, SilencesDonorsThatContradictTheCuratedName) {
  const PersonNameComponents bob{.givenName = "Bob", .familyName = "Lee"};
  // Donors: app "a" with and without a cluster, app "b" without one and in cluster "c".
  const DonationValues others = {phone("+49 30 1", from("a", "a-c", "c")),
                                 email("a@x", from("a", "a")), email("b@x", from("b", "b", "")),
                                 image("x", from("b", "b-c", "c"))};
  const struct {
    const char* name;
    std::optional<PersonNameComponents> curated;
    DonationValues names;
    const char* kept;
  } rows[] = {
      {"equivalent", annLee, {named({.givenName = "ann", .familyName = "LEE"})}, "a-c a b b-c"},
      {"contradiction in a cluster", annLee, {named(bob, from("z", "n", "c"))}, "a b"},
      {"contradiction of an app", annLee, {named(bob, from("a", "n"))}, "b b-c"},
      {"an empty cluster is none", annLee, {named(bob, from("b", "n", ""))}, "a-c a"},
      {"a missing family name", annLee, {named({.givenName = "Ann"}, from("a", "n"))}, "b b-c"},
      {"a curated card without name",
       PersonNameComponents{},
       {named(bob, from("a", "n"))},
       "b b-c"},
      {"no name against none",
       PersonNameComponents{},
       {named({.nickname = "x"}, from("a", "n"))},
       "a-c a b b-c"},
      {"agreeing names",
       std::nullopt,
       {named(bob), named(bob, from("a", "m"))},
       "name m a-c a b b-c"},
      {"disagreeing names", std::nullopt, {named(bob), named(annLee)}, "a-c a b b-c"},
  };
  for (const auto& row : rows) {
    DonationValues donations = row.names;
    donations.insert(donations.end(), others.begin(), others.end());
    ContactRebuilder rebuilder(donations, row.curated, {});
    const Contact card = rebuilder.buildNewContact();
    EXPECT_EQ(identifiersOf(rebuilder.filteredDonations()), row.kept) << row.name;
    EXPECT_EQ(card, cardOf(rebuilder.filteredDonations())) << row.name;
  }
}

TEST(ContactRebuilderTest, LeavesCuratedEmailAddressesOut) {
  const DonationValues donations = {
      email("ann@gmail.com", from("a", "alias")), email("Ann@Googlemail.com", from("a", "case")),
      email("o\u0308@x.org", from("a", "composition")), email("b@x.org", from("a", "other")),
      phone("+49 30 1", from("a", "phone"))};
  const struct {
    std::vector<std::string> curated;
    const char* kept;
  } rows[] = {
      {{}, "alias case composition other phone"},
      {{" mailto:ANN@googlemail.com"}, "case composition other phone"},
      {{"\u00d6@x.org", "ann@x.org"}, "alias case other phone"},
  };
  for (const auto& row : rows) {
    ContactRebuilder rebuilder(donations, std::nullopt, row.curated);
    static_cast<void>(rebuilder.buildNewContact());
    EXPECT_EQ(identifiersOf(rebuilder.filteredDonations()), row.kept);
  }
}

TEST(ContactBuilderTest, MergesEachKindByItsRule) {
  EXPECT_EQ(cardOf({}), Contact());
  const Contact card = cardOf({
      named({.givenName = "Ann", .familyName = "Lee", .nickname = "A"}),
      named({.givenName = "Anna", .nickname = ""}),
      email("\u00c9@X", from("a", "1")),
      email("e\u0301@x", from("b", "2"), "work"),
      email("other@x", from("a", "3"), "work"),
      phone("+49 30 1234", from("a", "4")),
      phone("+49301234", from("a", "5")),
      phone("+49 30 1234", from("b", "6"), "work"),
      postal({.street = "ALLEE 1", .country = "DE"}, from("a", "7")),
      postal({.street = "Allee 1", .country = "FR"}, from("b", "8")),
      postal({.country = "DE"}, from("a", "9")),
      postal({.country = "DE"}, from("a", "10")),
      email("allee 1", from("a", "11")),
      image("first"),
      image("last"),
  });
  EXPECT_EQ(PersonNameComponents::componentsForContact(card),
            (PersonNameComponents{.givenName = "Anna", .familyName = "Lee"}));
  EXPECT_EQ(described(card.emailAddresses(), [](const std::string& text) { return text; }),
            "home=\u00c9@X<1 work=other@x<3 ");
  EXPECT_EQ(described(card.phoneNumbers(), [](const PhoneNumber& n) { return n.stringValue(); }),
            "home=+49 30 1234<4 home=+49301234<5 ");
  EXPECT_EQ(described(card.postalAddresses(), [](const PostalAddress& a) { return a.street; }),
            "home=ALLEE 1<7 home=<9 home=<10 ");
  EXPECT_EQ(*card.imageData(), "last");
}

}  // namespace
}  // namespace quenlet
