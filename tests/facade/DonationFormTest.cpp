#include <gmock/gmock.h>

#include "facade/CardForm.h"
#include "facade/DonationForm.h"
#include "facade/FacadeError.h"
#include "platform/contacts/ValueBounds.h"

namespace quenlet {
namespace {

BusDictionary origin(BusDictionary more = {}) {
  more.emplace("donationIdentifier", "x:1");
  return more;
}

BusDictionary donationOf(const char* kind, BusValue value, BusDictionary from = origin()) {
  return {{"kind", kind}, {"value", std::move(value)}, {"origin", std::move(from)}};
}

BusDictionary emailOf(BusValue value, BusDictionary from = origin()) {
  return donationOf("emailAddress", std::move(value), std::move(from));
}

TEST(DonationFormTest, ReadsWhatItWrites) {
  const Date donated = *Date::fromISO8601("2026-05-01T12:00:00Z");
  const Date expires = *Date::fromISO8601("2026-06-02T13:00:00Z");
  const std::vector<Donation> donations = {
      {Name{.givenName = "Anna", .nickname = ""}, "org.a", "a:1", "c:1", donated, expires},
      {Email{"anna@example.org", "work"}, "org.a", "a:2", std::nullopt, donated, expires},
      {Phone{"+49 30 123456", "home"}, "org.a", "a:3", std::nullopt, donated, expires},
      {Postal{.address = {.street = "Weg 1\n2. Hof", .city = "Bonn"}, .label = "home"}, "org.a",
       "a:4", std::nullopt, donated, expires}};
  std::vector<BusDictionary> written;
  for (const Donation& donation : donations) written.push_back(donationDictionary(donation));
  const auto read = donationsIn(makeDictionaries(written));
  ASSERT_TRUE(read.ok()) << read.error()->description();
  EXPECT_EQ(read.value(), donations);
}

TEST(DonationFormTest, RefusesWhatIsTooLargeOrNotUnderstood) {
  BusDictionary withUnknownKey = emailOf("a@example.org");
  withUnknownKey.emplace("lable", "work");
  const auto part = [](const char* key, BusValue value) {
    return BusDictionary{{key, std::move(value)}};
  };
  const std::string longText(mostBytesInText + 1, 'a');
  const BusBytes large{std::string(mostBytesInImage + 1, 'i')};
  const std::tuple<const char*, BusDictionary, const char*> rows[] = {
      {"unknown kind", part("kind", "shoeSize"), InvalidArgsError},
      {"another type", emailOf(7u), InvalidArgsError},
      {"misspelt key", withUnknownKey, InvalidArgsError},
      {"no identifier", emailOf("a@example.org", {}), InvalidArgsError},
      {"no origin", {{"kind", "emailAddress"}, {"value", "a"}}, InvalidArgsError},
      {"another type of it", {{"kind", "imageData"}, {"origin", 7u}}, InvalidArgsError},
      {"no date", emailOf("a", origin({{"donationDate", "today"}})), InvalidArgsError},
      {"unknown part", donationOf("name", part("firstName", "Anna")), InvalidArgsError},
      {"another type of it", donationOf("postalAddress", part("city", 7u)), InvalidArgsError},
      {"long part of a name", donationOf("name", part("givenName", longText)), TooLargeError},
      {"long text", emailOf(longText), TooLargeError},
      {"long identifier", emailOf("a", origin({{"clusterIdentifier", std::string(1025, 'c')}})),
       TooLargeError},
      {"large image", donationOf("imageData", large), TooLargeError},
  };
  const auto fault = [](const BusValue& list) {
    const auto read = donationsIn(list);
    if (read.ok()) return std::string("none");
    EXPECT_EQ(read.error()->debugDescription().find("example.org"), std::string::npos);
    return facadeErrorName(*read.error());
  };
  for (const auto& [name, donation, error] : rows) {
    EXPECT_EQ(fault(makeDictionaries({donation})), error) << name;
  }
  EXPECT_EQ(fault("x"), InvalidArgsError) << "no list";
  EXPECT_EQ(fault(makeDictionaries(std::vector<BusDictionary>(1001, emailOf("a")))), TooLargeError);
}

TEST(DonationFormTest, ReadsAccountsAndIdentifiers) {
  const BusDictionary full{{"identifier", "a1"},
                           {"type", "org.example.mail"},
                           {"username", "anna@example.org"},
                           {"active", false},
                           {"dataClasses", makeTexts({"mail"})},
                           {"properties", BusDictionary{{"FullUserName", "Anna Berg"}}}};
  AccountRecord expected{"a1", "org.example.mail", "anna@example.org", false, {"mail"}};
  expected.textProperties = {{"FullUserName", "Anna Berg"}};
  const auto account = accountIn(full);
  ASSERT_TRUE(account.ok()) << account.error()->description();
  EXPECT_EQ(account.value(), expected);
  EXPECT_EQ(accountIn(BusDictionary()).value(), std::nullopt);

  const std::string longText(mostBytesInText + 1, 'a');
  const std::tuple<const char*, BusValue, const char*> rows[] = {
      {"identifier", 7u, InvalidArgsError},
      {"identifier", std::string(mostBytesInIdentifier + 1, 'a'), TooLargeError},
      {"username", longText, TooLargeError},
      {"active", "yes", InvalidArgsError},
      {"dataClasses", "mail", InvalidArgsError},
      {"dataClasses", makeTexts(std::vector<std::string>(1001, "a")), TooLargeError},
      {"dataClasses", makeTexts({std::string(mostBytesInIdentifier + 1, 'a')}), TooLargeError},
      {"properties", "x", InvalidArgsError},
      {"properties", BusDictionary{{"key", 7u}}, InvalidArgsError},
      {"properties", BusDictionary{{"key", longText}}, TooLargeError},
      {"unknown", "x", InvalidArgsError},
  };
  for (const auto& [key, value, error] : rows) {
    BusDictionary changed = full;
    changed.insert_or_assign(key, value);
    const auto read = accountIn(changed);
    EXPECT_EQ(read.ok() ? "" : facadeErrorName(*read.error()), error) << key;
  }
  EXPECT_FALSE(accountIn("x").ok());
}

TEST(DonationFormTest, KeepsAppsApart) {
  std::vector<Donation> donations = {{Email{"a@example.org", ""}, "", "home", "c"}};
  ASSERT_EQ(claimForApp("org.example.App", donations), nullptr);
  EXPECT_EQ(donations[0].bundleIdentifier, "org.example.App");
  EXPECT_EQ(donations[0].donationIdentifier, "org.example.App:home");
  EXPECT_EQ(donations[0].clusterIdentifier, "org.example.App:c");
  std::vector<Donation> all = donations;
  all.push_back({Email{"b@example.org", ""}, "org.example.Apple", "org.example.App:x"});
  all.push_back({Email{"c@example.org", ""}, "org.example.App", "org.example.Apple:x"});
  const auto own = donationsOfApp("org.example.App", all);
  ASSERT_EQ(own.size(), 1u);
  EXPECT_EQ(own[0].donationIdentifier, "home");
  EXPECT_EQ(own[0].clusterIdentifier, "c");
  donations[0].bundleIdentifier = "org.example.Other";
  EXPECT_EQ(facadeErrorName(*claimForApp("org.example.App", donations)), NotPermittedError);
}

TEST(CardFormTest, GivesTheKindsThatAreAllowed) {
  const Card card{.name = {"Dr.", "Anna", "M.", "Berg", "PhD", "Ann"},
                  .emailAddresses = {{"a\xFF@example.org", "work", Source{"org.a", "a:1"}}},
                  .phoneNumbers = {{"+49 30 123456", ""}},
                  .postalAddresses = {{{.city = "Bonn"}, "home"}},
                  .image = Image{"bytes"}};
  for (const auto& [kind, word] : cardKindWords) {
    SCOPED_TRACE(word);
    const Card some = limitedTo(card, {kind});
    EXPECT_EQ(some.name != Name{}, kind == CardKind::name);
    EXPECT_EQ(!some.emailAddresses.empty(), kind == CardKind::emailAddress);
    EXPECT_EQ(!some.phoneNumbers.empty(), kind == CardKind::phoneNumber);
    EXPECT_EQ(!some.postalAddresses.empty(), kind == CardKind::postalAddress);
    EXPECT_EQ(some.image.has_value(), kind == CardKind::imageData);
  }
  const std::string vCard = vCardOf(card);
  for (const char* part :
       {"N:Berg;Anna;M.;Dr.;PhD", "NICKNAME:Ann", "EMAIL;TYPE=work:a\xEF\xBF\xBD@example.org",
        "TEL:+49 30 123456", "ADR;TYPE=home:;;;Bonn;;;", "PHOTO:data:"}) {
    EXPECT_THAT(vCard, testing::HasSubstr(part));
  }
  const BusDictionary kept = cardDictionary(card, Sources::kept);
  EXPECT_EQ(*findEntry(kept, "emailAddresses"),
            makeDictionaries({{{"label", "work"}, {"value", "a\xEF\xBF\xBD@example.org"}}}));
  EXPECT_EQ(*findEntry(kept, "imageData"), BusValue(BusBytes{"bytes"}));
  const BusDictionary told = cardDictionary(card, Sources::told);
  const BusDictionary& entry = *findEntry(told, "emailAddresses")->elements()->front().dictionary();
  EXPECT_EQ(*findText(*findDictionary(entry, "origin"), "bundleIdentifier"), "org.a");
}

}  // namespace
}  // namespace quenlet
