#include "model/DonationValue.h"

#include <gtest/gtest.h>

#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

const DonationValues oneOfEachKind = {
    named({.givenName = "Ann", .nickname = ""}, from("app", "1", "cluster")),
    email("Ann@x", from("app", "2", "")),
    phone("+49 30 123456", from("app", "3", std::nullopt, Date(-0.1))),
    postal({.city = "Berlin"}, from("app", "4"), PostalAddressStyle::abbreviated),
    postal({}, from("app", "5")),
    image(std::string("\0\xff", 2), from("app", "6")),
};

TEST(DonationValueTest, SurvivesItsPropertyListForm) {
  for (const DonationValuePtr& value : oneOfEachKind) {
    const auto read =
        DonationValue::initWithPropertyListRepresentation(value->propertyListRepresentation());
    ASSERT_TRUE(read) << value->origin().donationIdentifier;
    EXPECT_EQ(*read, *value) << value->origin().donationIdentifier;
  }
}

TEST(DonationValueTest, ChangesNothingButTheExpirationDateInACopy) {
  for (const DonationValuePtr& value : oneOfEachKind) {
    const DonationValuePtr copy = value->copyWithNewExpirationDate(Date(7));
    PropertyListDictionary expected = value->propertyListRepresentation();
    PropertyListDictionary origin = *findDictionary(expected, "origin");
    origin.insert_or_assign("expirationDate", 7.0);
    expected.insert_or_assign("origin", origin);
    EXPECT_EQ(copy->propertyListRepresentation(), expected);
    if (const auto entry = copy->emailEntry().get()) {
      EXPECT_EQ(entry->storeInfo.valueOrigin->expirationDate, Date(7));
    }
  }
}

TEST(DonationValueTest, RefusesWhatIsNoRecord) {
  using Entries = PropertyListDictionary;
  const Entries origin = *findDictionary(email("a@x")->propertyListRepresentation(), "origin");
  const Entries good{{"emailAddress", "a@x"}, {"label", "h"}, {"origin", origin}, {"other", 1}};
  ASSERT_TRUE(DonationValue::initWithPropertyListRepresentation(good));
  // A changed entry that is false stands for none.
  const Entries::value_type none("emailAddress", false);
  const std::pair<const char*, Entries> rows[] = {
      {"no origin", {{"origin", false}}},
      {"empty origin", {{"origin", Entries{}}}},
      {"two kinds", {{"imageData", Data{"x"}}}},
      {"no kind", {none}},
      {"no label", {{"label", false}}},
      {"number as address", {{"emailAddress", 1}}},
      {"no phone number", {none, {"phoneNumber", "none"}}},
      {"postal without style", {none, {"postalAddress", Entries{{"city", "x"}}}}},
      {"postal of unknown fields", {none, {"postalAddress", Entries{{"x", "x"}}}, {"style", 0}}},
      {"name with a number", {none, {"nameComponents", Entries{{"givenName", 1}}}}},
      {"image as text", {none, {"imageData", "x"}}},
  };
  for (const auto& [name, changes] : rows) {
    Entries bad = good;
    for (const auto& [key, entry] : changes) {
      bad.erase(key);
      if (!entry.boolean()) bad.emplace(key, entry);
    }
    EXPECT_FALSE(DonationValue::initWithPropertyListRepresentation(bad)) << name;
  }
}

TEST(DonationValueTest, CastsEachKindToItsValue) {
  EXPECT_EQ(named({.givenName = "Ann"})->value(), Value::name({.givenName = "Ann"}));
  EXPECT_EQ(email("A@x")->value(), Value::emailAddress("A@x", "home"));
  EXPECT_EQ(phone("+49 30 123456")->value(), Value::phoneNumber("+49 30 123456", "home"));
  EXPECT_EQ(postal({.city = "B"}, from("a", "b"), PostalAddressStyle::abbreviated)->value(),
            Value::postalAddress({.city = "B"}, PostalAddressStyle::abbreviated, "home"));
  const Value cast = image("bytes")->value();
  EXPECT_EQ(*std::get<Value::ImageData>(cast.cases()).bytes, "bytes");
}

}  // namespace
}  // namespace quenlet
