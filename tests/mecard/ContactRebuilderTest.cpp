#include "mecard/ContactRebuilder.h"
#include "mecard/DonatedEntries.h"

#include "mecard/ContactBuilder.h"
#include "mecard/ProductionInfoProvider.h"
#include "tests/support/TestEnvironment.h"

namespace quenlet {
namespace {

using Names = PersonNameComponents;

const Names curatedAnnLee{.givenName = "Ann", .familyName = "Lee"};

Contact cardOf(const DonationValues& donations) {
  ContactBuilder builder;
  for (const auto& donation : donations) builder.addWithDonatedValue(donation);
  const Contact card = builder.build();
  EXPECT_EQ(builder.build(), card);
  return card;
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

TEST(ContactRebuilderTest, SilencesDonorsThatContradictTheCuratedName) {
  const Names bob{.givenName = "Bob", .familyName = "Lee"};
  // Donors: app "a" with and without a cluster, app "b" without one and in cluster "c".
  const DonationValues others = {phone("+49 30 1", from("a", "a-c", "c")),
                                 email("a@x", from("a", "a")), email("b@x", from("b", "b", "")),
                                 image("x", from("b", "b-c", "c"))};
  const auto byA = [](const Names& name) { return DonationValues{named(name, from("a", "n"))}; };
  const std::tuple<const char*, std::optional<Names>, DonationValues, const char*> rows[] = {
      {"equivalent", curatedAnnLee, byA({"Dr.", "ann", "B.", "LEE", "Jr.", "x"}), "a-c a b b-c"},
      {"composition", Names{.givenName = "\u00c9"}, byA({.givenName = "e\u0301"}), "a-c a b b-c"},
      {"exchanged", curatedAnnLee, byA({.givenName = "Lee", .familyName = "Ann"}), "b b-c"},
      {"a blank", curatedAnnLee, byA({.givenName = "Ann ", .familyName = "Lee"}), "b b-c"},
      {"contradiction in a cluster", curatedAnnLee, {named(bob, from("a", "n", "c"))}, "a b"},
      {"no family name", curatedAnnLee, byA({.givenName = "Ann"}), "b b-c"},
      {"an empty family name", Names{.givenName = "Ann"},
       byA({.givenName = "Ann", .familyName = ""}), "b b-c"},
      {"an empty given name", Names{}, byA({.givenName = ""}), "b b-c"},
      {"contradiction of an app", curatedAnnLee, byA(bob), "b b-c"},
      {"an empty cluster identifier", curatedAnnLee, {named(bob, from("b", "n", ""))}, "a-c a"},
      {"no name on the card", Names{}, byA(bob), "b b-c"},
      {"no name at all", Names{}, byA({.nickname = "x"}), "a-c a b b-c"},
      {"agreeing names", {}, {named(bob), named(bob, from("a", "m"))}, "a-c a b b-c name m"},
      {"disagreeing names", {}, {named(bob), named(curatedAnnLee), named(bob)}, "a-c a b b-c"},
  };
  for (const auto& [name, curated, names, kept] : rows) {
    DonationValues donations = others;
    donations.insert(donations.end(), names.begin(), names.end());
    ContactRebuilder rebuilder(listOf(donations), curated, {});
    const Contact card = rebuilder.buildNewContact();
    EXPECT_EQ(identifiersOf(rebuilder.filteredDonations()), kept) << name;
    EXPECT_EQ(card, cardOf(rebuilder.filteredDonations())) << name;
    if (!curated) continue;
    const Names donated = std::get<Names>(names.front()->value().cases());
    EXPECT_EQ(SuppressionNameEquivalence::areEquivalent(*curated, donated),
              rebuilder.filteredDonations().size() == others.size())
        << name;
  }
}

TEST(ContactRebuilderTest, LeavesCuratedEmailAddressesOut) {
  const DonationValues donations = {email("ann@gmail.com", from("a", "alias")),
                                    email("Ann@Googlemail.com", from("a", "case")),
                                    email("o\u0308@x.org", from("a", "composition")),
                                    email("b@x.org", from("a", "other")),
                                    email("ANN@googlemail.com", from("a", "raw")),
                                    postal({.street = "ann@gmail.com"}, from("a", "street"))};
  const std::pair<std::vector<std::string>, const char*> rows[] = {
      {{}, "alias case composition other raw street"},
      {{"ANN@googlemail.com"}, "case composition other raw street"},
      {{"\u00d6@x.org", "ann@x.org"}, "alias case other raw street"},
  };
  for (const auto& [curated, kept] : rows) {
    ContactRebuilder rebuilder(listOf(donations), std::nullopt, curated);
    static_cast<void>(rebuilder.buildNewContact());
    EXPECT_EQ(identifiersOf(rebuilder.filteredDonations()), kept);
  }
}

TEST(ContactBuilderTest, MergesEachKindByItsRule) {
  EXPECT_EQ(cardOf({}), Contact());
  const Names whole{"Dr.", "Ann", "B.", "Lee", "Jr.", "A"};
  EXPECT_EQ(PersonNameComponents::componentsForContact(cardOf({named(whole)})), whole);
  const Contact card = cardOf({
      named(whole),
      named({.givenName = "Anna", .nickname = ""}),
      email("\u00c9@X", from("a", "1")),
      email("e\u0301@x", from("b", "2"), "work"),
      email("other@x", from("a", "3"), "work"),
      phone("+49 30 1234", from("a", "4")),
      phone("+49301234", from("a", "5")),
      phone("+49 30 1234", from("b", "6"), "work"),
      phone("+49 30 1234 X5", from("b", "12"), "work"),
      phone("+49 30 1234 x5", from("b", "13"), "work"),
      postal({.street = "ALLEE 1", .country = "DE"}, from("a", "7")),
      postal({.street = "Allee 1", .country = "FR"}, from("b", "8")),
      postal({.country = "DE"}, from("a", "9")),
      postal({.country = "DE"}, from("a", "10")),
      email("allee 1", from("a", "11")),
      email("+49301234", from("a", "14")),
      image("first"),
      image("last"),
  });
  EXPECT_EQ(PersonNameComponents::componentsForContact(card),
            (Names{"Dr.", "Anna", "B.", "Lee", "Jr.", {}}));
  EXPECT_EQ(described(card.emailAddresses(), [](const std::string& text) { return text; }),
            "home=\u00c9@X<1 work=other@x<3 ");
  EXPECT_EQ(described(card.phoneNumbers(), [](const PhoneNumber& n) { return n.stringValue(); }),
            "home=+49 30 1234<4 home=+49301234<5 work=+49 30 1234 X5<12 work=+49 30 1234 x5<13 ");
  EXPECT_EQ(described(card.postalAddresses(), [](const PostalAddress& a) { return a.street; }),
            "home=ALLEE 1<7 home=<9 home=<10 ");
  EXPECT_EQ(*card.imageData(), "last");
}

class ProductionInfoProviderTest : public EnvironmentTest {
 protected:
  ProductionInfoProviderTest() {
    environment->contacts->whenAsked = [](const auto& keys) {
      EXPECT_EQ(keys,
                (std::vector{ContactGivenNameKey, ContactFamilyNameKey, ContactEmailAddressesKey}));
    };
  }

  const std::shared_ptr<ProductionInfoProvider> provider =
      std::make_shared<ProductionInfoProvider>();

  void start(const std::string& handler = "changed") {
    provider->startMonitoring(environment, [this, handler] { environment->trace.note(handler); });
  }
  void setCard(const char* given, const char* family, const std::vector<std::string>& addresses) {
    ContactFields card;
    card.givenName = given;
    card.familyName = family;
    for (const auto& address : addresses) {
      card.emailAddresses.append(entryOf<std::string>(*email(address)));
    }
    environment->contacts->card = std::make_shared<const Contact>(std::move(card));
  }
  Events notice() {
    environment->center->post(MeCardChangeDistributedNotification);
    Events events = takeTrace();
    events.erase(events.begin());
    return events;
  }
  static Events events(const char* name, const char* addresses, const char* handler = nullptr) {
    Events all = {
        std::string("caller: contactsChangedNotificationFoundName:nameChanged: ") + name,
        std::string("caller: contactsChangedNotificationEmailAddressesChanged: ") + addresses};
    if (handler) all.push_back(std::string("caller: ") + handler);
    return all;
  }
};

TEST_F(ProductionInfoProviderTest, CallsTheHandlerOnceForEachChangeOfAFact) {
  setCard("Ann", "Lee", {"B@x", " a@x ", "mailto:b@X", "\U0001F600@x", "\uFF41@x"});
  const std::vector<std::string> addresses = {"a@x", "b@x", "\uFF41@x", "\U0001F600@x"};
  start();
  EXPECT_EQ(takeTrace(), events("true,true", "true", "changed"));
  EXPECT_EQ(provider->curatedName(), curatedAnnLee);
  EXPECT_EQ(provider->curatedEmailAddresses(), addresses) << "in the order of code points";

  setCard("Ann", "Lee", {addresses.rbegin(), addresses.rend()});
  EXPECT_EQ(notice(), events("true,false", "false"));
  setCard("ann", "Lee", addresses);
  EXPECT_EQ(notice(), events("true,true", "false", "changed"));
  EXPECT_EQ(notice(), events("true,false", "false"));
  setCard("ann", "Lee", {"a@x"});
  EXPECT_EQ(notice(), events("true,false", "true", "changed"));
  setCard("", "", {"a@x"});
  EXPECT_EQ(notice(), events("true,true", "false", "changed"));
  EXPECT_EQ(provider->curatedName(), PersonNameComponents{});
  environment->contacts->card.reset();
  EXPECT_EQ(notice(), events("false,true", "true", "changed"));
  EXPECT_EQ(provider->curatedName(), std::nullopt);
  EXPECT_EQ(provider->curatedEmailAddresses(), std::vector<std::string>{});
}

TEST_F(ProductionInfoProviderTest, UpdatesWithoutALogUntilItStartsAndTellsTheLastHandler) {
  setCard("Ann", "Lee", {"A@x"});
  for (const bool changed : {true, false}) {
    EXPECT_EQ(provider->updateCuratedName(provider->curatedMeCard()), changed);
    EXPECT_EQ(provider->updateCuratedEmailAddresses(provider->curatedMeCard()), changed);
  }
  EXPECT_EQ(takeTrace(), Events{});
  start("former");
  EXPECT_EQ(takeTrace(), events("true,false", "false"));
  setCard("Ann", "Lee", {"b@x"});
  start("latter");
  EXPECT_EQ(takeTrace(), events("true,false", "true", "latter"));
  setCard("Ann", "Lee", {});
  EXPECT_EQ(notice(), events("true,false", "true", "latter"));
}

TEST_F(ProductionInfoProviderTest, TellsOfAChangeThatIsNoticedWhileItStarts) {
  setCard("Ann", "Lee", {});
  environment->center->notifiesNewObservers = true;
  start();
  Events expected = events("true,true", "false", "changed");
  for (const auto& event : events("true,false", "false")) expected.push_back(event);
  EXPECT_EQ(takeTrace(), expected);
}

}  // namespace
}  // namespace quenlet
