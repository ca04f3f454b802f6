#include "model/Value.h"

#include <gtest/gtest.h>

namespace quenlet {
namespace {

using Entries = PropertyListDictionary;

const PostalAddress berlin{.street = "Allee 1", .city = "Berlin"};
const PostalAddressStyle mailing = PostalAddressStyle::mailingAddress;

TEST(ValueTest, ComparesContentByCanonicalEquivalenceAlone) {
  const auto bytes = std::make_shared<const std::string>("bytes");
  const Value home = Value::postalAddress(berlin, mailing, "h");
  const std::tuple<const char*, Value, Value, bool> rows[] = {
      {"names", Value::name({.givenName = "Zo\u00eb"}), Value::name({.givenName = "Zoe\u0308"}),
       true},
      {"absent and empty", Value::name({.nickname = ""}), Value::name({}), false},
      {"composition", Value::emailAddress("\u00e9@x", "a\u0301"),
       Value::emailAddress("e\u0301@x", "\u00e1"), true},
      {"letter case", Value::emailAddress("A@x", "h"), Value::emailAddress("a@x", "h"), false},
      {"e-mail label", Value::emailAddress("a@x", "h"), Value::emailAddress("a@x", "w"), false},
      {"kinds", Value::emailAddress("1", "h"), Value::phoneNumber("1", "h"), false},
      {"phone", Value::phoneNumber("+1 2", "h"), Value::phoneNumber("+12", "h"), false},
      {"phone label", Value::phoneNumber("+12", "h"), Value::phoneNumber("+12", "w"), false},
      {"postal", home, Value::postalAddress(berlin, mailing, "h"), true},
      {"postal field", home, Value::postalAddress({.city = "Berlin"}, mailing, "h"), false},
      {"style", home, Value::postalAddress(berlin, PostalAddressStyle::abbreviated, "h"), false},
      {"postal label", home, Value::postalAddress(berlin, mailing, "w"), false},
      {"one image", Value::imageData(bytes), Value::imageData(bytes), false},
  };
  for (const auto& [name, a, b, equal] : rows) {
    EXPECT_EQ(a == b, equal) << name;
    EXPECT_EQ(b == a, equal) << name;
  }
}

TEST(ValueTest, TakesTheFirstReadableKindOfADictionary) {
  using Entry = Entries::value_type;
  const Entry name("nameComponents", Entries{{"givenName", "Ann"}, {"unknown", "x"}});
  const Entry mail("emailAddress", "a@x");
  const Entry phone("phoneNumber", "+12");
  const Entry city("postalAddress", Entries{{"city", "Berlin"}});
  const Entry label("label", "h");
  const Value postalWithoutLabel = Value::postalAddress({.city = "Berlin"}, mailing, "");
  const std::tuple<const char*, Entries, std::optional<Value>> rows[] = {
      {"name first", {name, mail, label}, Value::name({.givenName = "Ann"})},
      {"name that is not all text",
       {{"nameComponents", Entries{{"givenName", 1}}}, mail, label},
       Value::emailAddress("a@x", "h")},
      {"e-mail without label decides", {mail, city}, {}},
      {"e-mail that is no text",
       {{"emailAddress", 1}, phone, label},
       Value::phoneNumber("+12", "h")},
      {"phone with a label that is no text", {phone, {"label", 1}}, {}},
      {"postal without label", {city, {"style", 1}}, postalWithoutLabel},
      {"postal that is not all text",
       {{"postalAddress", Entries{{"city", "Berlin"}, {"x", 1}}}},
       {}},
      {"image", {{"imageData", Data{"bytes"}}}, {}},
  };
  for (const auto& [row, entries, expected] : rows) {
    EXPECT_EQ(Value::valueWithDictionary(entries), expected) << row;
  }
}

}  // namespace
}  // namespace quenlet
