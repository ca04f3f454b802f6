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

TEST(SuppressionNameEquivalenceTest, ComparesGivenAndFamilyNameButForCase) {
  const std::tuple<Names, Names, bool> rows[] = {
      {annLee,
       {.namePrefix = "Dr.",
        .givenName = "ANN",
        .middleName = "B.",
        .familyName = "lee",
        .nameSuffix = "Jr.",
        .nickname = "x"},
       true},
      {annLee, {.givenName = "Lee", .familyName = "Ann"}, false},
      {annLee, {.givenName = "Ann ", .familyName = "Lee"}, false},
      {{.givenName = "\u00c9va"}, {.givenName = "e\u0301va"}, true},
      {annLee, {.givenName = "Ann"}, false},
      {{.familyName = "Lee"}, {.familyName = "Li"}, false},
      {{.givenName = ""}, {}, false},
      {{.familyName = ""}, {}, false},
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
      {"contradiction in a cluster", annLee, {named(bob, from("a", "n", "c"))}, "a b"},
      {"no family name", annLee, {named({.givenName = "Ann"}, from("a", "n"))}, "b b-c"},
      {"an empty family name",
       Names{.givenName = "Ann"},
       {named({.givenName = "Ann", .familyName = ""}, from("a", "n"))},
       "b b-c"},
      {"contradiction of an app", annLee, {named(bob, from("a", "n"))}, "b b-c"},
      {"an empty cluster is none", annLee, {named(bob, from("b", "n", ""))}, "a-c a"},
      {"no name on the card", Names{}, {named(bob, from("a", "n"))}, "b b-c"},
      {"no name at all", Names{}, {named({.nickname = "x"}, from("a", "n"))}, "a-c a b b-c"},
      {"agreeing names", {}, {named(bob), named(bob, from("a", "m"))}, "a-c a b b-c name m"},
      {"disagreeing names", {}, {named(bob), named(annLee), named(bob)}, "a-c a b b-c"},
  };
  for (const auto& [name, curated, names, kept] : rows) {
    DonationValues donations = others;
    donations.insert(donations.end(), names.begin(), names.end());
    ContactRebuilder rebuilder(std::make_shared<const DonationValues>(donations), curated, {});
    const Contact card = rebuilder.buildNewContact();
    EXPECT_EQ(identifiersOf(rebuilder.filteredDonations()), kept) << name;
    EXPECT_EQ(card, cardOf(rebuilder.filteredDonations())) << name;
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
    ContactRebuilder rebuilder(std::make_shared<const DonationValues>(donations), std::nullopt,
                               curated);
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
  const std::shared_ptr<ProductionInfoProvider> provider =
      std::make_shared<ProductionInfoProvider>();

  void start(const std::string& handler = "changed") {
    provider->startMonitoring(environment, [this, handler] { environment->trace.note(handler); });
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
  EXPECT_EQ(provider->curatedName(),
            (PersonNameComponents{.givenName = "Ann", .familyName = "Lee"}));
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

TEST_F(ProductionInfoProviderTest, AsksOneContactStoreForTheKeysOfBothFacts) {
  int stores = 0;
  PlatformServices services = environment->services();
  services.makeContactStore = [&] {
    ++stores;
    return environment->contacts;
  };
  const PlatformServices::Scope counting(services);
  const std::vector<KeyDescriptor> keys = {ContactGivenNameKey, ContactFamilyNameKey,
                                           ContactEmailAddressesKey};
  environment->contacts->whenAsked = [&](const auto& asked) { EXPECT_EQ(asked, keys); };
  EXPECT_EQ(stores, 0);
  for (int round = 0; round < 2; ++round) EXPECT_EQ(provider->curatedMeCard(), nullptr);
  start();
  EXPECT_EQ(stores, 1);
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
