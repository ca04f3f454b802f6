#include "mecard/CardReasons.h"

#include <gtest/gtest.h>

#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

using Names = PersonNameComponents;
using enum CardDecision;

const Names annLee{.givenName = "Ann", .familyName = "Lee"};
const Names bobLee{.givenName = "Bob", .familyName = "Lee"};

struct Expected final {
  CardDecision decision;
  int other = -1;  // its place in the list
};

struct Row final {
  const char* name;
  std::optional<Names> curatedName;
  std::vector<std::pair<DonationValuePtr, Expected>> donations;
};

TEST(CardReasonsTest, TellTheDecisionOnEachDonationAndWhatItRestsOn) {
  const Row rows[] = {
      {"a contradicting app, named twice",
       annLee,
       {{phone("+49 30 1", from("a", "1")), {appSilenced, 1}},
        {named(bobLee, from("a", "2")), {appSilenced, 1}},
        {named(Names{}, from("a", "3")), {appSilenced, 1}},
        {phone("+49 30 2", from("b", "4")), {shown}},
        {named(annLee, from("b", "5")), {ownName}}}},
      {"names that disagree",
       {},
       {{named(annLee, from("a", "1")), {namesDisagree, 2}},
        {named({.givenName = "ANN", .familyName = "lee"}, from("b", "2")), {namesDisagree, 2}},
        {named(bobLee, from("c", "3")), {namesDisagree, 0}},
        {named({.givenName = "Eve"}, from("d", "4")), {namesDisagree, 0}},
        {image("x", from("d", "5")), {shown}}}},
      {"entries that were given before",
       {},
       {{email("a@x", from("a", "1")), {shown}},
        {phone("+49 30 1", from("a", "2")), {shown}},
        {email("A@x", from("b", "3")), {givenBefore, 0}},
        {phone("+49 30 1", from("b", "4")), {givenBefore, 1}},
        {phone("+49301", from("b", "5")), {shown}},
        {postal({.country = "DE"}, from("b", "6")), {shown}},
        {postal({.country = "DE"}, from("b", "7")), {shown}},
        {email("a@X", from("c", "8")), {givenBefore, 0}}}},
      {"names and images that are given again",
       {},
       {{named({.givenName = "Ann", .familyName = "Lee", .nickname = "A"}, from("a", "1")),
         {shown}},
        {named(annLee, from("b", "2")), {givenAgain, 3}},
        {image("x", from("a", "3")), {givenAgain, 4}},
        {named(annLee, from("c", "4")), {shown}},
        {image("y", from("b", "5")), {givenAgain, 5}},
        {image("x", from("c", "6")), {shown}}}},
      {"a name that is taken over part by part",
       {},
       {{named({.namePrefix = "Dr.", .nickname = "A"}, from("a", "1")), {givenAgain, 2}},
        {named({.namePrefix = "Prof."}, from("b", "2")), {shown}},
        {named({.nickname = "B"}, from("c", "3")), {shown}},
        {named(Names{}, from("d", "4")), {hasNothing}}}},
  };
  for (const Row& row : rows) {
    DonationValues donations;
    for (const auto& [donation, expected] : row.donations) donations.push_back(donation);
    const auto reasons =
        CardReasons::of(std::make_shared<const DonationValues>(donations), row.curatedName, {});
    for (const auto& [donation, expected] : row.donations) {
      const CardReason& reason = reasons.reasonOf(*donation);
      const std::string which =
          std::string(row.name) + " " + donation->decoded().origin.donationIdentifier;
      EXPECT_EQ(reason.decision, expected.decision) << which;
      const auto place = static_cast<std::size_t>(expected.other);
      EXPECT_EQ(reason.other, expected.other < 0 ? nullptr : donations[place].get()) << which;
    }
  }
}

}  // namespace
}  // namespace quenlet
