#include "platform/contacts/PostalAddress.h"

#include <gtest/gtest.h>

#include "platform/contacts/PostalAddressFormatter.h"

namespace quenlet {
namespace {

const PostalAddress full{"1 Main St\n Rear ", "Mitte", "Berlin", "Kreis", "BE", "10115",
                         "Germany",           "de"};

TEST(PostalAddressTest, IsRebuiltFromItsDictionaryAndComparesEveryField) {
  const auto built = PostalAddress::postalAddressWithDictionaryRepresentation;
  const PropertyListDictionary entries = full.dictionaryRepresentation();
  EXPECT_EQ(built(entries), full);
  for (const auto& [key, text] : entries) {
    auto changed = entries;
    changed.erase(key);
    EXPECT_FALSE(built(changed) == full) << key;
  }
  EXPECT_EQ((PostalAddress{.city = "Z\u00fcrich"}), (PostalAddress{.city = "Zu\u0308rich"}));
  EXPECT_EQ((PostalAddress{.city = "Ulm"}.dictionaryRepresentation()),
            (PropertyListDictionary{{"city", "Ulm"}}));
  EXPECT_EQ(built({{"city", ""}, {"planet", 3}}), PostalAddress());
  EXPECT_EQ(built({{"city", "Ulm"}, {"state", 1}}), std::nullopt);
  EXPECT_EQ(built({{"planet", "Earth"}}), std::nullopt);
}

TEST(PostalAddressFormatterTest, LaysAddressesOutOnOneLine) {
  using Line = std::optional<std::string>;
  const std::tuple<PostalAddress, Line, Line> cases[] = {
      {full, "1 Main St, Rear, Mitte, Berlin, Kreis, BE, 10115",
       "1 Main St, Rear, Mitte, Berlin, Kreis, BE, 10115, Germany"},
      {{.street = "\r\n A \r\n\n B", .city = " ", .isoCountryCode = "de"}, "A, B", "A, B"},
      {{.country = "Peru", .isoCountryCode = "pe"}, std::nullopt, "Peru"},
      {{.city = "Zu\u0308rich"}, "Z\u00fcrich", "Z\u00fcrich"},
  };
  const auto line = PostalAddressFormatter::singleLineStringFromPostalAddress;
  for (const auto& [address, withoutCountry, withCountry] : cases) {
    EXPECT_EQ(line(address, CountryName::leftOut), withoutCountry);
    EXPECT_EQ(line(address, CountryName::included), withCountry);
  }
}

}  // namespace
}  // namespace quenlet
