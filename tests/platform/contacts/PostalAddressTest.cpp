#include "platform/contacts/PostalAddress.h"

#include <gtest/gtest.h>

#include "platform/contacts/PostalAddressFormatter.h"

namespace quenlet {
namespace {

PostalAddress fullAddress() {
  return {"1 Main St\n Rear ", "Mitte", "Berlin", "Kreis", "BE", "10115", "Germany", "de"};
}

TEST(PostalAddressTest, IsRebuiltFromItsDictionary) {
  EXPECT_EQ(PostalAddress::postalAddressWithDictionaryRepresentation(
                fullAddress().dictionaryRepresentation()),
            fullAddress());
  EXPECT_EQ((PostalAddress{.city = "Ulm"}.dictionaryRepresentation()),
            (PropertyListDictionary{{"city", "Ulm"}}));

  const auto built = PostalAddress::postalAddressWithDictionaryRepresentation;
  EXPECT_EQ(built({{"city", ""}, {"planet", 3}}), PostalAddress());
  EXPECT_EQ(built({{"city", "Ulm"}, {"state", 1}}), std::nullopt);
  EXPECT_EQ(built({{"planet", "Earth"}}), std::nullopt);
}

TEST(PostalAddressTest, EqualsByCanonicalEquivalenceOfEveryField) {
  EXPECT_EQ((PostalAddress{.city = "Z\u00fcrich"}), (PostalAddress{.city = "Zu\u0308rich"}));
  for (const auto& [key, text] : fullAddress().dictionaryRepresentation()) {
    auto entries = fullAddress().dictionaryRepresentation();
    entries.erase(key);
    EXPECT_FALSE(PostalAddress::postalAddressWithDictionaryRepresentation(entries) == fullAddress())
        << key;
  }
}

TEST(PostalAddressFormatterTest, LaysAddressesOutOnOneLine) {
  const struct {
    PostalAddress address;
    std::optional<std::string> withoutCountry;
    std::optional<std::string> withCountry;
  } cases[] = {
      {fullAddress(), "1 Main St, Rear, Mitte, Berlin, Kreis, BE, 10115",
       "1 Main St, Rear, Mitte, Berlin, Kreis, BE, 10115, Germany"},
      {{.street = "\r\n A \r\n\n B", .city = " ", .isoCountryCode = "de"}, "A, B", "A, B"},
      {{.country = "Peru", .isoCountryCode = "pe"}, std::nullopt, "Peru"},
      {{}, std::nullopt, std::nullopt},
  };
  const auto line = PostalAddressFormatter::singleLineStringFromPostalAddress;
  for (const auto& [address, withoutCountry, withCountry] : cases) {
    EXPECT_EQ(line(address, CountryName::leftOut), withoutCountry);
    EXPECT_EQ(line(address, CountryName::included), withCountry);
  }
  EXPECT_EQ(line({.city = "Z\u00fcrich"}, CountryName::leftOut),
            line({.city = "Zu\u0308rich"}, CountryName::leftOut));
}

}  // namespace
}  // namespace quenlet
