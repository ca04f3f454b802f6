#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/contacts/Contact.h"
#include "platform/contacts/EmailAddress.h"
#include "platform/contacts/NameComponentsTokenizer.h"
#include "platform/contacts/PersonNameComponents.h"
#include "platform/contacts/PhoneNumber.h"
#include "platform/contacts/PostalAddress.h"
#include "platform/contacts/PostalAddressFormatter.h"

namespace quenlet {
namespace {

using testing::ElementsAre;
using Components = PersonNameComponents;
using Texts = std::vector<std::string>;
using TextPairs = std::vector<std::pair<std::string, std::string>>;

std::shared_ptr<const LabeledValue<std::string>> entry(const char* label, const char* address,
                                                       double expiration = 2) {
  const ValueOrigin origin{"app", "1", std::nullopt, Date(1), Date(expiration)};
  return std::make_shared<const LabeledValue<std::string>>(
      LabeledValue<std::string>{label, address, {std::make_shared<const ValueOrigin>(origin)}});
}

TEST(ContactTest, EqualsByContent) {
  const std::pair<LabeledValues<std::string>, bool> cases[] = {
      {{entry("home", "zoe\u0308@example.com")}, true},
      {{entry("work", "zo\u00eb@example.com")}, false},
      {{entry("home", "zo\u00eb@example.com", 3)}, false},
      {{nullptr}, false},
      {{}, false},
  };
  ContactFields original, changed;
  original.emailAddresses = {entry("home", "zo\u00eb@example.com")};
  for (const auto& [entries, equal] : cases) {
    changed.emailAddresses = entries;
    EXPECT_EQ(Contact(original) == Contact(changed), equal);
    EXPECT_EQ(Contact(changed) == Contact(original), equal);
  }
}

TEST(EmailAddressTest, NormalFormIsItsOwnNormalForm) {
  for (const auto& [address, normal] :
       TextPairs{{" \r\n\tAnn.Lee+x@Example.COM ", "ann.lee+x@example.com"},
                 {"mailto:MailTo: Mailto:a@b", "a@b"},
                 {"\u00C9va@example.com", "\u00E9va@example.com"}}) {
    EXPECT_EQ(EmailAddressNormalize(address), normal);
    EXPECT_EQ(EmailAddressNormalize(normal), normal);
  }
}

TEST(EmailAddressTest, ExpandsToTheSameMailboxUnderEveryAlias) {
  const auto expanded = EmailAddressExpandAliasedDomains;
  EXPECT_THAT(expanded("ann@GoogleMail.com "), ElementsAre("ann@GoogleMail.com ", "ann@gmail.com"));
  EXPECT_THAT(expanded("\"a@gmail.com\"@pm.me"),
              ElementsAre("\"a@gmail.com\"@pm.me", "\"a@gmail.com\"@proton.me",
                          "\"a@gmail.com\"@protonmail.com", "\"a@gmail.com\"@protonmail.ch"));
  for (const char* alone : {"", "ann@", "ann@example.com", "gmail.com", "a@sub.gmail.com"}) {
    EXPECT_THAT(expanded(alone), ElementsAre(alone));
  }
}

TEST(PersonNameComponentsTest, IsRebuiltFromItsDictionaryAndComparesCanonically) {
  for (const Components& name : {Components{"Dr.", "Ann", "B.", "Lee", "PhD", "Annie"},
                                 Components{.givenName = ""}, Components()}) {
    EXPECT_EQ(Components::componentsWithDictionary(name.dictionaryRepresentation()), name);
  }
  EXPECT_EQ((Components{.givenName = "", .nickname = "An"}.dictionaryRepresentation()),
            (PropertyListDictionary{{"givenName", ""}, {"nickname", "An"}}));
  EXPECT_EQ(Components::componentsWithDictionary({{"givenName", 1}, {"age", "9"}}), Components());
  EXPECT_EQ((Components{.givenName = "Zo\u00eb"}), (Components{.givenName = "Zoe\u0308"}));
  EXPECT_FALSE((Components{.givenName = ""}) == Components());
}

TEST(NameComponentsTokenizerTest, TakesFullNamesApart) {
  // Prefix, given, middle, family, suffix, nickname.
  const TextPairs cases = {
      {" , ,", "|||||"},
      {"ann@example.org Berg", "|||||"},
      {"\"Berg, Ann\" <ann@example.org>", "|Ann||Berg||"},
      {" 'Ann Berg' ", "|Ann||Berg||"},
      {"Ann Berg, M.Sc., CFA", "|Ann||Berg|M.Sc. CFA|"},
      {"Berg Anna, Dr.", "Dr.|Berg||Anna||"},
      {"Dr.-Ing. Hans Meier, CSc.", "Dr.-Ing.|Hans||Meier|CSc.|"},
      {"Univ.-Prof. Dr. h.c. mult. Eva Klein B.A.", "Univ.-Prof. Dr. h.c. mult.|Eva||Klein|B.A.|"},
      {"Mag Hall", "|Mag||Hall||"},
      {"St. John", "|St.||John||"},
      {"Ana dos Santos e Silva J\u00FAnior", "|Ana||dos Santos e Silva|J\u00FAnior|"},
      {"LI Na", "|Na||LI||"},
      {"DE GAULLE Charles", "|Charles||DE GAULLE||"},
      {"M\u00E1ire Mhac an tSaoi", "|M\u00E1ire||Mhac an tSaoi||"},
      {"\u0639\u0645\u0631 \u0628\u0646 \u0633\u0639\u062F",
       "|\u0639\u0645\u0631||\u0628\u0646 \u0633\u0639\u062F||"},
      {"\u30A2\u30F3\u30FB\u30EA\u30FC", "|\u30A2\u30F3||\u30EA\u30FC||"},
      {"Ann", "|Ann||||"},
      {"Ann\u00A0B.\u3000C. Lee", "|Ann|B. C.|Lee||"},
      {"Lee, Dr. Ann, PhD", "Dr.|Ann||Lee|PhD|"},
      {"King, Jr., Martin Luther", "|Martin|Luther|King|Jr.|"},
      {"Martin Luther King Jr.", "|Martin|Luther|King|Jr.|"},
      {"Ann Lee, MA", "|Ann||Lee|MA|"},
      {"Jack Ma", "|Jack||Ma||"},
      {"Prof. Dr. med. Eva Klein", "Prof. Dr. med.|Eva||Klein||"},
      {"Dr.", "|Dr.||||"},
      {"Gen Tanaka", "|Gen||Tanaka||"},
      {"Gogh, Vincent van", "|Vincent||van Gogh||"},
      {"Van Morrison", "|Van||Morrison||"},
      {"Omar bin Said Al Amin", "|Omar|bin Said|Al Amin||"},
      {"Jose Ortega y Gasset", "|Jose||Ortega y Gasset||"},
      {"\u201EBob Lee\u201C Ray", "|Ray||||Bob Lee"},
      {"Robert 'Bob' O'Neil", "|Robert||O'Neil||Bob"},
      {"Ann O'Neil 'x", "|Ann|O'Neil|'x||"},
      {"William (Bill) Gray (Sales)", "|William||Gray||Bill"},
      {"Ann Lee (Sales)", "|Ann||Lee||"},
      {"Antoni Gaud\u00ED i Cornet", "|Antoni||Gaud\u00ED i Cornet||"},
      {"Se\u00E1n \u00D3 R\u00EDord\u00E1in", "|Se\u00E1n||\u00D3 R\u00EDord\u00E1in||"},
      {"Karl Freiherr von und zu Stein", "|Karl||Freiherr von und zu Stein||"},
      {"Jan van 't Hoff", "|Jan||van 't Hoff||"},
      {"DUPONT-\u00C9LIE Jean Paul", "|Jean|Paul|DUPONT-\u00C9LIE||"},
      {"JEAN DUPONT", "|JEAN||DUPONT||"},
      {"JR Smith", "|JR||Smith||"},
      {"\u5C71\u7530\u3000\u592A\u90CE", "|\u592A\u90CE||\u5C71\u7530||"},
      {"\uAE40 \uBBFC\uC218", "|\uBBFC\uC218||\uAE40||"},
      {"\u30A2\u30F3 \u30EA\u30FC", "|\u30A2\u30F3||\u30EA\u30FC||"},
      {"\u738B\u5C0F\u660E", "|\u738B\u5C0F\u660E||||"},
  };
  for (const auto& [name, expected] : cases) {
    const Components parts = NameComponentsTokenizer::componentsFromString(name);
    std::string text = parts.namePrefix.value_or("");
    for (const auto& part :
         {parts.givenName, parts.middleName, parts.familyName, parts.nameSuffix, parts.nickname}) {
      EXPECT_NE(part, "") << "absent, not empty";
      text += "|" + part.value_or("");
    }
    EXPECT_EQ(text, expected) << name;
  }
}

TEST(PhoneNumberTest, KeepsTheTextAndFindsItsDigits) {
  const TextPairs cases = {
      {"12345678901234567890", "12345678901234567890"},
      {"+1.202.555-0101", "+12025550101"},
      {"[030]/23125 000", "03023125000"},
      {" \u202A+49\u00A030\u201323125\u202C\t", "+493023125"},
      {"+49 (0)30 23125", "+493023125"},
      {"tel:+49-30-23125;ext=5", "+493023125"},
      {"TEL: 7042;phone-context=example.com;ext=5", "7042"},
      {"202 555 0101 x12", "2025550101"},
      {"202 555 0101 Ext. \u0661\u0662", "2025550101"},
      {"202 555 0101,,12#", "2025550101"},
      {"\uFF0B\uFF18\uFF11\uFF08\uFF13\uFF09\uFF0D\uFF15\uFF15\uFF15", "+813555"},
      {"\u0660\u0661 \u06F3\u06F4 \u0967", "01341"},
  };
  for (const auto& [text, digits] : cases) {
    const auto number = PhoneNumber::withStringValue(text);
    ASSERT_TRUE(number) << text;
    EXPECT_EQ(number->stringValue(), text);
    EXPECT_EQ(number->digits(), digits) << text;
  }
}

TEST(PhoneNumberTest, RefusesTextWithoutAPlausibleNumber) {
  const Texts cases[] = {
      {"", "1", "+1", "tel:", "ext. 12", "\u0661"},
      {"123456789012345678901", "112 ext 123456789012345678901"},
      {"*31#", "call 112", "112 or 113", "555-HELP", "1+12", "++112"},
      {"112 x", "112 ext 12 a", "112;ext=", "112;=5", "112;ext=1 2", "112,a"},
      {"11\u09E52", "\U0001D7CF\U0001D7CF", std::string("112\0", 4)},
      {"112\n", "11\xC3", "11\xE2\x80", "11\xE2(\xA1", "11\xFF"},
  };
  for (const Texts& texts : cases) {
    for (const auto& text : texts) EXPECT_FALSE(PhoneNumber::withStringValue(text)) << text;
  }
}

const PostalAddress fullAddress{"1 Main St\n Rear ", "Mitte", "Berlin", "Kreis", "BE", "10115",
                                "Germany",           "de"};

TEST(PostalAddressTest, IsRebuiltFromItsDictionaryAndComparesEveryField) {
  const auto built = PostalAddress::postalAddressWithDictionaryRepresentation;
  const PropertyListDictionary entries = fullAddress.dictionaryRepresentation();
  EXPECT_EQ(built(entries), fullAddress);
  for (const auto& [key, text] : entries) {
    auto changed = entries;
    changed.erase(key);
    EXPECT_FALSE(built(changed) == fullAddress) << key;
  }
  EXPECT_EQ((PostalAddress{.city = "Z\u00fcrich"}), (PostalAddress{.city = "Zu\u0308rich"}));
  EXPECT_EQ((PostalAddress{.city = "Ulm"}.dictionaryRepresentation()),
            (PropertyListDictionary{{"city", "Ulm"}}));
  EXPECT_EQ(built({{"city", ""}, {"planet", 3}}), PostalAddress());
  EXPECT_EQ(built({{"city", "Ulm"}, {"state", 1}}), std::nullopt);
  EXPECT_EQ(built({{"planet", "Earth"}}), std::nullopt);
}

TEST(PostalAddressFormatterTest, LaysAddressesOutOnOneLine) {
  const auto line = [](const PostalAddress& address, CountryName country) {
    return PostalAddressFormatter::singleLineStringFromPostalAddress(address, country)
        .value_or("-");
  };
  const std::string lines = "1 Main St, Rear, Mitte, Berlin, Kreis, BE, 10115";
  EXPECT_EQ(line(fullAddress, CountryName::leftOut), lines);
  EXPECT_EQ(line(fullAddress, CountryName::included), lines + ", Germany");
  EXPECT_EQ(line({.street = "\r\n A \r\n\n B", .city = " "}, CountryName::included), "A, B");
  EXPECT_EQ(line({.country = "Peru", .isoCountryCode = "pe"}, CountryName::leftOut), "-");
  EXPECT_EQ(line({.city = "Zu\u0308rich"}, CountryName::leftOut), "Z\u00fcrich");
}

}  // namespace
}  // namespace quenlet
