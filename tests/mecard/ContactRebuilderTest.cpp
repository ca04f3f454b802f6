#include "mecard/ContactRebuilder.h"

#include "mecard/ContactBuilder.h"
#include "mecard/ProductionInfoProvider.h"
#include "mecard/SuppressionNameEquivalence.h"
#include "tests/support/DonationFactory.h"
#include "tests/support/TestEnvironment.h"

namespace quenlet {
namespace {

using Names = PersonNameComponents;

const Names annLee{.givenName = "Ann", .familyName = "Lee"};

Contact cardOf(const DonationValues& donations) {
  ContactBuilder builder;
  for (const auto& donation : donations) builder.addWithDonatedValue(donation);
  return builder.build();
}

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
  const std::tuple<Names, Names, bool> rows[] = {
      {annLee, {.givenName = "ANN", .middleName = "B.", .familyName = "lee"}, true},
      {{.givenName = "\u00c9va"}, {.givenName = "e\u0301va"}, true},
      {annLee, {.givenName = "Ann"}, false},
      {{.familyName = "Lee"}, {.familyName = "Li"}, false},
      {{.givenName = ""}, {}, false},
      {{.nickname = "x"}, {}, true},
  };
  for (const auto& [a, b, equivalent] : rows) {
    EXPECT_EQ(SuppressionNameEquivalence::areEquivalent(a, b), equivalent);
    EXPECT_EQ(SuppressionNameEquivalence::areEquivalent(b, a), equivalent);
  }
}

TEST(ContactRebuilderTest, SilencesDonorsThatContradictTheCuratedName) {
  const Names bob{.givenName = "Bob", .familyName = "Lee"};
  // Donors: app "a" with and without a cluster, app "b" without one and in cluster "c".
  const DonationValues others = {phone("+49 30 1", from("a", "a-c", "c")),
                                 email("a@x", from("a", "a")), email("b@x", from("b", "b", "")),
                                 image("x", from("b", "b-c", "c"))};
  const std::tuple<const char*, std::optional<Names>, DonationValues, const char*> rows[] = {
      {"equivalent", annLee, {named({.givenName = "ann", .familyName = "LEE"})}, "a-c a b b-c"},
      {"contradiction in a cluster", annLee, {named(bob, from("z", "n", "c"))}, "a b"},
      {"contradiction of an app", annLee, {named(bob, from("a", "n"))}, "b b-c"},
      {"an empty cluster is none", annLee, {named(bob, from("b", "n", ""))}, "a-c a"},
      {"no name on the card", Names{}, {named(bob, from("a", "n"))}, "b b-c"},
      {"no name at all", Names{}, {named({.nickname = "x"}, from("a", "n"))}, "a-c a b b-c"},
      {"agreeing names", {}, {named(bob), named(bob, from("a", "m"))}, "name m a-c a b b-c"},
      {"disagreeing names", {}, {named(bob), named(annLee), named(bob)}, "a-c a b b-c"},
  };
  for (const auto& [name, curated, names, kept] : rows) {
    DonationValues donations = names;
    donations.insert(donations.end(), others.begin(), others.end());
    ContactRebuilder rebuilder(std::make_shared<const DonationValues>(donations), curated, {});
    const Contact card = rebuilder.buildNewContact();
    EXPECT_EQ(identifiersOf(rebuilder.filteredDonations()), kept) << name;
    EXPECT_EQ(card, cardOf(rebuilder.filteredDonations())) << name;
  }
}

TEST(ContactRebuilderTest, LeavesCuratedEmailAddressesOut) {
  const DonationValues donations = {
      email("ann@gmail.com", from("a", "alias")), email("Ann@Googlemail.com", from("a", "case")),
      email("o\u0308@x.org", from("a", "composition")), email("b@x.org", from("a", "other")),
      phone("+49 30 1", from("a", "phone"))};
  const std::pair<std::vector<std::string>, const char*> rows[] = {
      {{}, "alias case composition other phone"},
      {{" mailto:ANN@googlemail.com"}, "case composition other phone"},
      {{"\u00d6@x.org", "ann@x.org"}, "alias case other phone"},
  };
  for (const auto& [curated, kept] : rows) {
    ContactRebuilder rebuilder(std::make_shared<const DonationValues>(donations), std::nullopt,
                               curated);
    static_cast<void>(rebuilder.buildNewContact());
    EXPECT_EQ(identifiersOf(rebuilder.filteredDonations()), kept);
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
            (Names{.givenName = "Anna", .familyName = "Lee"}));
  EXPECT_EQ(described(card.emailAddresses(), [](const std::string& text) { return text; }),
            "home=\u00c9@X<1 work=other@x<3 ");
  EXPECT_EQ(described(card.phoneNumbers(), [](const PhoneNumber& n) { return n.stringValue(); }),
            "home=+49 30 1234<4 home=+49301234<5 ");
  EXPECT_EQ(described(card.postalAddresses(), [](const PostalAddress& a) { return a.street; }),
            "home=ALLEE 1<7 home=<9 home=<10 ");
  EXPECT_EQ(*card.imageData(), "last");
}

class ProductionInfoProviderTest : public EnvironmentTest {
 protected:
  const std::shared_ptr<ProductionInfoProvider> provider =
      std::make_shared<ProductionInfoProvider>();

  void start() {
    provider->startMonitoring(environment, [this] { environment->trace.note("changed"); });
  }
  void setCard(const char* given, const char* family, std::vector<std::string> addresses) {
    ContactFields card;
    card.givenName = given;
    card.familyName = family;
    for (auto& address : addresses) {
      card.emailAddresses.append(std::make_shared<const LabeledValue<std::string>>(
          LabeledValue<std::string>{"home", std::move(address), {}}));
    }
    environment->contacts->card = std::make_shared<const Contact>(std::move(card));
  }
  Events notice() {
    environment->center->post(MeCardChangeDistributedNotification);
    Events events = takeTrace();
    events.erase(events.begin());
    return events;
  }
  static Events events(const char* name, const char* addresses, bool changed) {
    Events all = {
        std::string("caller: contactsChangedNotificationFoundName:nameChanged: ") + name,
        std::string("caller: contactsChangedNotificationEmailAddressesChanged: ") + addresses};
    if (changed) all.push_back("caller: changed");
    return all;
  }
};

TEST_F(ProductionInfoProviderTest, CallsTheHandlerOnceForEachChangeOfAFact) {
  setCard("Ann", "Lee", {"B@x", " a@x ", "mailto:b@X"});
  start();
  EXPECT_EQ(takeTrace(), events("true,true", "true", true));
  EXPECT_EQ(provider->curatedName(),
            (PersonNameComponents{.givenName = "Ann", .familyName = "Lee"}));
  EXPECT_EQ(provider->curatedEmailAddresses(), (std::vector<std::string>{"a@x", "b@x"}));

  setCard("Ann", "Lee", {"a@x", "b@x"});
  EXPECT_EQ(notice(), events("true,false", "false", false));
  setCard("ann", "Lee", {"a@x", "b@x"});
  EXPECT_EQ(notice(), events("true,true", "false", true));
  setCard("ann", "Lee", {"a@x"});
  EXPECT_EQ(notice(), events("true,false", "true", true));
  setCard("", "", {"a@x"});
  EXPECT_EQ(notice(), events("true,true", "false", true));
  EXPECT_EQ(provider->curatedName(), PersonNameComponents{});
  environment->contacts->card.reset();
  EXPECT_EQ(notice(), events("false,true", "true", true));
  EXPECT_EQ(provider->curatedName(), std::nullopt);
  EXPECT_EQ(provider->curatedEmailAddresses(), std::vector<std::string>{});
}

TEST_F(ProductionInfoProviderTest, TellsOfAChangeThatIsNoticedWhileItStarts) {
  setCard("Ann", "Lee", {});
  environment->center->notifiesNewObservers = true;
  start();
  Events expected = events("true,true", "false", true);
  for (const auto& event : events("true,false", "false", false)) expected.push_back(event);
  EXPECT_EQ(takeTrace(), expected);
}

}  // namespace
}  // namespace quenlet
