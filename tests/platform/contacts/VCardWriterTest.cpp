#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

#include "platform/contacts/VCard.h"

namespace quenlet {
namespace {

template <typename T>
void add(LabeledValues<T>& entries, std::string label, T value) {
  entries.push_back(std::make_shared<const LabeledValue<T>>(
      LabeledValue<T>{std::move(label), std::move(value), {}}));
}

ContactFields everything() {
  ContactFields fields;
  fields.namePrefix = "Prof. Dr.";
  fields.givenName = "Zo\u00eb";
  fields.middleName = "a;b,c\\n\\d";
  for (int i = 0; i < 100; ++i) fields.familyName += "a\u00fc\u20ac\U0001F600\\;";
  fields.nameSuffix = "Jr.";
  fields.nickname = "Z, \"the\" one";
  for (const char* label : {"home", "", "pref", "internet", "School", "a,b", "B\u00fcro", "_$!<x>",
                            "two\nlines", "^n", "a:\"b\"", "x-y2"}) {
    add(fields.emailAddresses, label, std::string("zoe@example.com"));
  }
  add(fields.phoneNumbers, "cell", *PhoneNumber::withStringValue("+1 (202) 555-0101, 12"));
  add(fields.postalAddresses, "home",
      PostalAddress{"1 Main St\nRear, left", "Mitte", "Berlin", "Kreis; West", "BE", "10115",
                    "Germany", "de"});
  add(fields.postalAddresses, "", PostalAddress{.street = "", .city = "Ulm"});
  std::string image = "\x89PNG\r\n\x1A\n";
  for (int i = 0; i < 1000; ++i) image += static_cast<char>(i);
  fields.imageData = std::make_shared<const std::string>(std::move(image));
  return fields;
}

TEST(VCardWriterTest, IsReadBackEqual) {
  ContactFields nickname, address;
  nickname.nickname = "Bo Lee";
  add(address.emailAddresses, "", std::string("Bo Lee"));
  for (const auto& fields : {everything(), ContactFields(), nickname, address}) {
    const std::string text = writeVCard(Contact(fields));
    const auto cards = parseVCards(text);
    ASSERT_TRUE(cards.isLeft()) << cards.right()->description() << text;
    ASSERT_EQ(cards.left().size(), 1u) << text;
    EXPECT_EQ(cards.left()[0].contact, Contact(fields)) << text;
    EXPECT_EQ(cards.left()[0].skippedEntries, 0u) << text;
  }
}

TEST(VCardWriterTest, FoldsBetweenCharactersAt75Bytes) {
  for (std::size_t offset = 0; offset < 4; ++offset) {
    ContactFields fields;
    fields.familyName.assign(offset, 'x');
    for (int i = 0; i < 200; ++i) fields.familyName += "\U0001F600";
    const std::string text = writeVCard(Contact(std::move(fields)));
    std::string_view rest = text;
    while (!rest.empty()) {
      const std::size_t end = rest.find("\r\n");
      ASSERT_LE(end, 75u);
      ASSERT_EQ(rest.substr(0, end).find('\n'), std::string_view::npos);
      rest.remove_prefix(end + 2);
      ASSERT_FALSE(rest.starts_with(' ') && (rest[1] & 0xC0) == 0x80) << "a character is split";
    }
  }
}

TEST(VCardWriterTest, WritesPlainCardsPlainlyAndLeavesOutWhatNoCardHolds) {
  ContactFields fields;
  fields.givenName = "An\x01n\xC2\x9B\r\nB";
  fields.familyName = "Lee\xFF";
  add(fields.emailAddresses, "home", std::string("a@example.com"));
  add(fields.emailAddresses, "My own", std::string("b@example.com"));
  fields.imageData = std::make_shared<const std::string>("\xFF\xD8\xFF");
  EXPECT_EQ(writeVCard(Contact(std::move(fields))),
            "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:\r\nN:;Ann\\nB;;;\r\n"
            "EMAIL;TYPE=home:a@example.com\r\n"
            "item1.EMAIL:b@example.com\r\nitem1.X-ABLabel:My own\r\n"
            "PHOTO:data:image/jpeg;base64,/9j/\r\nEND:VCARD\r\n");
}

}  // namespace
}  // namespace quenlet
