#include "client/Conversion.h"

#include <gtest/gtest.h>

#include "mecard/DonatedEntries.h"
#include "platform/foundation/PropertyListError.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

const Date expires(40 * 86400 + 2.5);

Donation publicly(decltype(Donation::content) content,
                  std::optional<std::string> cluster = std::nullopt) {
  return {std::move(content), "app", "app:1", std::move(cluster), Date(1.5), expires};
}

TEST(ConversionTest, KeepsEveryFieldOfEveryKindBothWays) {
  const DonationOrigin origin = from("app", "app:1", std::nullopt, expires);
  const std::tuple<const char*, Donation, DonationValuePtr> rows[] = {
      {"name", publicly(Name{"Dr.", "Ann", "M.", "Berg", "Jr.", "Annie"}),
       named({"Dr.", "Ann", "M.", "Berg", "Jr.", "Annie"}, origin)},
      {"absent and empty components", publicly(Name{.givenName = "", .familyName = "Berg"}),
       named({.givenName = "", .familyName = "Berg"}, origin)},
      {"e-mail, cluster", publicly(Email{"ann@example.org", "work"}, "cluster"),
       email("ann@example.org", from("app", "app:1", "cluster", expires), "work")},
      {"phone", publicly(Phone{"+49 (30) 12-3", "cell"}), phone("+49 (30) 12-3", origin, "cell")},
      {"postal, abbreviated",
       publicly(Postal{
           {"s", "sl", "c", "sa", "st", "pc", "co", "iso"}, AddressStyle::abbreviated, "home"}),
       postal({"s", "sl", "c", "sa", "st", "pc", "co", "iso"}, origin,
              PostalAddressStyle::abbreviated)},
      {"image", publicly(Image{std::string("\0\xFF", 2)}), image(std::string("\0\xFF", 2), origin)},
  };
  for (const auto& [name, donation, value] : rows) {
    const Result<DonationValuePtr> converted = Conversion::donationValue(donation);
    ASSERT_TRUE(converted.ok()) << name;
    EXPECT_EQ(*converted.value(), *value) << name;
    EXPECT_EQ(Conversion::donation(*value), donation) << name;
  }
}

TEST(ConversionTest, MakesACardWithSources) {
  ContactFields fields;
  fields.familyName = "Berg";
  fields.emailAddresses = {
      entryOf<std::string>(*email("a@b.c", from("app", "e", "cluster", expires), "work"))};
  fields.phoneNumbers = {std::make_shared<const LabeledValue<PhoneNumber>>(
      LabeledValue<PhoneNumber>{"cell", *PhoneNumber::withStringValue("+4930123456"), {}})};
  fields.postalAddresses = {entryOf<PostalAddress>(*postal({.city = "Ulm"}, from("app", "p")))};
  fields.imageData = std::make_shared<const std::string>("png");
  const Card card{
      .name = {.familyName = "Berg"},
      .emailAddresses = {{"a@b.c", "work", Source{"app", "e", "cluster", Date(1.5), expires}}},
      .phoneNumbers = {{"+4930123456", "cell", std::nullopt}},
      .postalAddresses = {{{.city = "Ulm"},
                           "home",
                           Source{"app", "p", std::nullopt, Date(1.5), Date::distantFuture()}}},
      .image = Image{"png"}};
  EXPECT_EQ(Conversion::card(Contact(fields)), card);
  EXPECT_EQ(Conversion::card(Contact()), Card());
}

TEST(ConversionTest, MakesAnAccountOrSaysWhatIsWrongWithIt) {
  const std::string properties =
      "<plist><dict><key>a</key><true/><key>b</key><integer>7</integer></dict></plist>";
  const AccountRecord record{"work", "t", "ann", false, {"mail"}, {{"a", "text"}}, properties};
  const Account account{"work", AccountType{"t"}, "ann",
                        false,  {"mail"},         {{"a", "text"}, {"b", 7}}};
  const Result<AccountPtr> made = Conversion::account(record);
  ASSERT_TRUE(made.ok());
  EXPECT_EQ(*made.value(), account);
  EXPECT_EQ(Conversion::account(std::nullopt), Result<AccountPtr>::success(nullptr));

  const std::tuple<const char*, AccountRecord, const char*> rows[] = {
      {"no identifier", {}, "ovaro.quenlet.service-error"},
      {"a list of properties",
       {.identifier = "work", .propertyList = "<plist version=\"1.0\"><array/></plist>"},
       "ovaro.quenlet.service-error"},
      {"no property list", {.identifier = "work", .propertyList = "text"}, PropertyListErrorDomain},
  };
  for (const auto& [name, bad, domain] : rows) {
    const Result<AccountPtr> refused = Conversion::account(bad);
    EXPECT_EQ(refused.ok() ? "" : refused.error()->domain(), domain) << name;
  }
}

}  // namespace
}  // namespace quenlet
