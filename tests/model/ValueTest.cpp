#include "model/Value.h"

#include <gtest/gtest.h>

namespace quenlet {
namespace {

const PostalAddress berlin{.street = "Allee 1", .city = "Berlin"};
const PostalAddressStyle mailing = PostalAddressStyle::mailingAddress;

TEST(ValueTest, ComparesContentByCanonicalEquivalenceAlone) {
  const auto bytes = std::make_shared<const std::string>("bytes");
  const struct {
    const char* name;
    Value a;
    Value b;
    bool equal;
  } rows[] = {
      {"names", Value::name({.givenName = "Zo\u00eb"}), Value::name({.givenName = "Zoe\u0308"}),
       true},
      {"absent and empty", Value::name({.nickname = ""}), Value::name({}), false},
      {"composition", Value::emailAddress("\u00e9@x", "a\u0301"),
       Value::emailAddress("e\u0301@x", "\u00e1"), true},
      {"letter case", Value::emailAddress("A@x", "h"), Value::emailAddress("a@x", "h"), false},
      {"e-mail label", Value::emailAddress("a@x", "h"), Value::emailAddress("a@x", "w"), false},
      {"kinds", Value::emailAddress("1", "h"), Value::phoneNumber("1", "h"), false},
      {"phone", Value::phoneNumber("+1 2", "h"), Value::phoneNumber("+1 2", "h"), true},
      {"phone blanks", Value::phoneNumber("+1 2", "h"), Value::phoneNumber("+12", "h"), false},
      {"phone label", Value::phoneNumber("+12", "h"), Value::phoneNumber("+12", "w"), false},
      {"postal", Value::postalAddress(berlin, mailing, "h"),
       Value::postalAddress(berlin, mailing, "h"), true},
      {"postal field", Value::postalAddress(berlin, mailing, "h"),
       Value::postalAddress({.street = "Allee 1"}, mailing, "h"), false},
      {"style", Value::postalAddress(berlin, PostalAddressStyle::abbreviated, "h"),
       Value::postalAddress(berlin, mailing, "h"), false},
      {"postal label", Value::postalAddress(berlin, mailing, "h"),
       Value::postalAddress(berlin, mailing, "w"), false},
      {"one image", Value::imageData(bytes), Value::imageData(bytes), false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.a == row.b, row.equal);
    EXPECT_EQ(row.b == row.a, row.equal);
  }
}

TEST(ValueTest, TakesTheFirstReadableKindOfADictionary) {
  const PropertyListDictionary ann{{"givenName", "Ann"}, {"unknown", "x"}};
  const PropertyListDictionary city{{"city", "Berlin"}};
  const Value postalWithoutLabel = Value::postalAddress({.city = "Berlin"}, mailing, "");
  const struct {
    const char* name;
    PropertyListDictionary entries;
    std::optional<Value> expected;
  } rows[] = {
      {"name before e-mail",
       {{"nameComponents", ann}, {"emailAddress", "a@x"}, {"label", "h"}},
       Value::name({.givenName = "Ann"})},
      {"name that is not all text",
       {{"nameComponents", PropertyListDictionary{{"givenName", 1}}},
        {"emailAddress", "a@x"},
        {"label", "h"}},
       Value::emailAddress("a@x", "h")},
      {"e-mail without label decides", {{"emailAddress", "a@x"}, {"postalAddress", city}}, {}},
      {"e-mail that is no text",
       {{"emailAddress", 1}, {"phoneNumber", "+12"}, {"label", "h"}},
       Value::phoneNumber("+12", "h")},
      {"phone with a label that is no text", {{"phoneNumber", "+12"}, {"label", 1}}, {}},
      {"postal without label", {{"postalAddress", city}, {"style", 1}}, postalWithoutLabel},
      {"postal with a bad label", {{"postalAddress", city}, {"label", 1}}, postalWithoutLabel},
      {"postal without fields", {{"postalAddress", PropertyListDictionary{}}}, {}},
      {"postal that is not all text",
       {{"postalAddress", PropertyListDictionary{{"city", "Berlin"}, {"x", 1}}}},
       {}},
      {"image", {{"imageData", Data{"bytes"}}}, {}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Value::valueWithDictionary(row.entries), row.expected) << row.name;
  }
}

}  // namespace
}  // namespace quenlet
