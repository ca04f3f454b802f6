#include "model/DonationBounds.h"
#include "model/Value.h"

#include <gtest/gtest.h>

#include "platform/foundation/PropertyListSerializer.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

using Entries = PropertyListDictionary;
using Name = PersonNameComponents;
using Mail = Value::EmailAddress;
using Phone = Value::PhoneNumber;
using Postal = Value::PostalAddress;
using Image = Value::ImageData;

const PostalAddress berlin{.street = "Allee 1", .city = "Berlin"};
const PostalAddressStyle mailing = PostalAddressStyle::mailingAddress;

TEST(ValueTest, ComparesContentByCanonicalEquivalenceAlone) {
  const auto bytes = std::make_shared<const std::string>("bytes");
  const Postal home{berlin, mailing, "h"};
  const std::tuple<const char*, Value::Cases, Value::Cases, bool> rows[] = {
      {"names", Name{.givenName = "Zo\u00eb"}, Name{.givenName = "Zoe\u0308"}, true},
      {"absent and empty", Name{.nickname = ""}, Name{}, false},
      {"composition", Mail{"\u00e9@x", "a\u0301"}, Mail{"e\u0301@x", "\u00e1"}, true},
      {"letter case", Mail{"A@x", "h"}, Mail{"a@x", "h"}, false},
      {"e-mail label", Mail{"a@x", "h"}, Mail{"a@x", "w"}, false},
      {"kinds", Mail{"1", "h"}, Phone{"1", "h"}, false},
      {"phone", Phone{"+1 2", "h"}, Phone{"+12", "h"}, false},
      {"phone label", Phone{"+12", "h"}, Phone{"+12", "w"}, false},
      {"phone label's composition", Phone{"+12", "\u00e9"}, Phone{"+12", "e\u0301"}, true},
      {"postal field", home, Postal{{.city = "Berlin"}, mailing, "h"}, false},
      {"style", home, Postal{berlin, PostalAddressStyle::abbreviated, "h"}, false},
      {"postal label", home, Postal{berlin, mailing, "w"}, false},
      {"postal all", home, Postal{berlin, mailing, "h"}, true},
      {"one image", Image{bytes}, Image{bytes}, false},
  };
  for (const auto& [name, a, b, equal] : rows) {
    EXPECT_EQ(Value(a) == Value(b), equal) << name;
    EXPECT_EQ(Value(b) == Value(a), equal) << name;
  }
}

TEST(ValueTest, TakesTheFirstReadableKindOfADictionary) {
  using Entry = Entries::value_type;
  const Entry name("nameComponents", Entries{{"givenName", "Ann"}, {"unknown", "x"}});
  const Entry mail("emailAddress", "a@x");
  const Entry phone("phoneNumber", "+12");
  const Entry city("postalAddress", Entries{{"city", "Berlin"}});
  const Entry badCity("postalAddress", Entries{{"city", "Berlin"}, {"x", 1}});
  const Entry badName("nameComponents", Entries{{"givenName", 1}});
  const Entry label("label", "h");
  const Postal postalWithoutLabel{{.city = "Berlin"}, mailing, ""};
  const std::tuple<const char*, Entries, std::optional<Value::Cases>> rows[] = {
      {"name first", {name, mail, label}, Name{.givenName = "Ann"}},
      {"then e-mail", {mail, phone, city, label}, Mail{"a@x", "h"}},
      {"then phone", {phone, city, label}, Phone{"+12", "h"}},
      {"then postal", {city, label}, Postal{{.city = "Berlin"}, mailing, "h"}},
      {"name not all text", {badName, mail, label}, Mail{"a@x", "h"}},
      {"e-mail without label decides", {mail, city}, {}},
      {"no e-mail", {{"emailAddress", 1}, phone, label}, Phone{"+12", "h"}},
      {"phone with a label that is not a text", {phone, {"label", 1}}, {}},
      {"postal without label", {city, {"style", 1}}, postalWithoutLabel},
      {"postal not all text", {badCity}, {}},
      {"postal without a known key", {{"postalAddress", Entries{{"x", "y"}}}, label}, {}},
      {"image", {{"imageData", Data{"bytes"}}}, {}},
  };
  for (const auto& [row, entries, expected] : rows) {
    const auto value = Value::valueWithDictionary(entries);
    EXPECT_EQ(value, expected ? std::optional(Value(*expected)) : std::nullopt) << row;
  }
}

TEST(DonationValueTest, RefusesWhatIsNoRecord) {
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

// Each text differs from one of a record in one place; most are no longer texts of a record.
TEST(DonationValueTest, ReadsATextAsTheGeneralReaderDoesOrNotAtAll) {
  const DonationValues values = {
      named({.givenName = "\u00c9va", .familyName = "", .nickname = "<&\r"}, from("a", "1", "c")),
      named({}, from("a", "2", "")),
      email("A&B@x", from("\u00e9", "3", "c\t"), ""),
      phone("+49 (0)30 1;ext=2", from("a", "4")),
      image(std::string("\0\xff", 2), from("a", "5")),
      postal({.street = "1\n2", .isoCountryCode = "DE"}, from("a", "6"), PostalAddressStyle{-7}),
      postal({}, from("a", "e\u0301", {}, Date(1764034261.1234567)))};
  const auto taken = [](const std::string& text) {
    std::string_view rest = text;
    DonationValues records;
    if (!DonationValue::takeFromPropertyListTexts(rest, records)) return DonationValuePtr();
    const std::string document =
        "<plist version=\"1.0\">" + text.substr(0, text.size() - rest.size()) + "</plist>";
    const auto general = PropertyListSerializer::objectWithData(document);
    const auto expected =
        DonationValue::initWithPropertyListRepresentation(*general.value().dictionary());
    EXPECT_TRUE(expected && *records[0] == *expected) << text;
    EXPECT_TRUE(records[0]->contentKey() == expected->contentKey()) << text;
    return records[0];
  };
  int others = 0;
  for (const DonationValuePtr& value : values) {
    const std::string written(*value->propertyListText());
    EXPECT_EQ(*taken(written), *value);
    for (std::size_t place = 0; place < written.size(); ++place) {
      for (const std::string piece : {"", "&", "<", "\r", "1", "\x01", "\xff", ">", "&#9;", "x"}) {
        others += taken(std::string(written).replace(place, 1, piece)) != nullptr;
      }
    }
  }
  EXPECT_GT(others, 500);
}

// A small record that is left alone keeps little alive, and loaded records stay close together.
TEST(DonationValueTest, KeepsTextsTogetherInSmallBlocksAndALargeOneByItself) {
  DonationValues values;
  for (int i = 0; i < 306; ++i) {
    values.push_back(i == 300 ? image(std::string(100'000, 'i'), from("a", "image"))
                              : email("a@x", from("a", std::to_string(1000 + i))));
  }
  std::string texts;
  for (const DonationValuePtr& value : values) texts += *value->propertyListText();
  const std::size_t smallSize = values[0]->propertyListText()->size();
  const std::size_t fitting = (std::size_t{1} << 16) / smallSize;
  DonationValues records;
  std::vector<std::size_t> blocks;
  for (std::string_view rest = texts; !rest.empty();) {
    const std::size_t former = records.size();
    ASSERT_TRUE(DonationValue::takeFromPropertyListTexts(rest, records)) << former;
    blocks.push_back(records.size() - former);
  }
  EXPECT_EQ(blocks, (std::vector<std::size_t>{fitting, 300 - fitting, 1, 5}));
  ASSERT_EQ(records.size(), values.size());
  for (std::size_t i = 0; i < values.size(); ++i) EXPECT_EQ(*records[i], *values[i]) << i;
}

TEST(DonationBoundsTest, NamesTheFieldThatIsBeyondItsBound) {
  const std::string text(65'536, 't');
  const std::string more = text + "t";
  const auto origin = [](const std::string& bundle, const std::string& donation,
                         const std::string& cluster) {
    return Entries{{"origin", Entries{{"bundleIdentifier", bundle},
                                      {"donationIdentifier", donation},
                                      {"clusterIdentifier", cluster}}}};
  };
  const std::pair<Entries, std::optional<std::string>> rows[] = {
      {{{"emailAddress", text}, {"label", text}}, {}},
      {{{"nameComponents", Entries{{"nickname", text}}}, {"label", ""}}, {}},
      {{{"imageData", Data{std::string(8'388'608, 'p')}}}, {}},
      {origin(text, text, ""), {}},
      {{{"unknown", more}, {"emailAddress", Data{more}}}, {}},
      {{{"emailAddress", more}}, "emailAddress is larger than 64 KiB"},
      {{{"label", more}}, "label is larger than 64 KiB"},
      {{{"nameComponents", Entries{{"nickname", more}}}}, "nickname is larger than 64 KiB"},
      {{{"postalAddress", Entries{{"street", more}}}}, "street is larger than 64 KiB"},
      {origin("app", "id", more), "clusterIdentifier is larger than 64 KiB"},
      {{{"imageData", Data{std::string(8'388'609, 'p')}}}, "imageData is larger than 8 MiB"},
      {origin("", "id", "x"), "bundleIdentifier is empty"},
      {origin("app", "", "x"), "donationIdentifier is empty"},
  };
  for (const auto& [record, violation] : rows) {
    EXPECT_EQ(DonationBounds::violation(record), violation);
  }
  EXPECT_TRUE(email("a@b", from("app", "id", ""))->propertyListText());
  EXPECT_FALSE(email("a@b", from("", "id"))->propertyListText());
  EXPECT_FALSE(email("a@b", from("app", ""))->propertyListText());
}

}  // namespace
}  // namespace quenlet
