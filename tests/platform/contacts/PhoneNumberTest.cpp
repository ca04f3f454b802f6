#include "platform/contacts/PhoneNumber.h"

#include <gtest/gtest.h>

#include <string>

namespace quenlet {
namespace {

TEST(PhoneNumberTest, KeepsTheTextAndFindsItsDigits) {
  const struct {
    const char* text;
    const char* digits;
  } cases[] = {
      {"112", "112"},
      {"+49 30 23125-000", "+493023125000"},
      {"(202) 555-0101", "2025550101"},
      {"+1.202.555.0101", "+12025550101"},
      {"[030]/23125 000", "03023125000"},
      {" \u202A+49\u00A030\u201323125\u202C\t", "+493023125"},
      {"+49 (0)30 23125", "+493023125"},
      {"(0)30 23125", "03023125"},
      {"tel:+49-30-23125;ext=5", "+493023125"},
      {"TEL: 7042;phone-context=example.com;ext=5", "7042"},
      {"202 555 0101 x12", "2025550101"},
      {"202 555 0101 Ext. 12", "2025550101"},
      {"202 555 0101#12 ", "2025550101"},
      {"202 555 0101 extension \u0661\u0662", "2025550101"},
      {"202 555 0101,,12#", "2025550101"},
      {"202 555 0101;12", "2025550101"},
      {"\uFF0B\uFF18\uFF11\uFF08\uFF13\uFF09\uFF0D\uFF15\uFF15\uFF15", "+813555"},
      {"\u0660\u0661\u0662 \u06F3\u06F4", "01234"},
      {"\u0967\u0968", "12"},
      {"12345678901234567890", "12345678901234567890"},
  };
  for (const auto& [text, digits] : cases) {
    const auto number = PhoneNumber::withStringValue(text);
    ASSERT_TRUE(number) << text;
    EXPECT_EQ(number->stringValue(), text);
    EXPECT_EQ(number->digits(), digits) << text;
  }
}

TEST(PhoneNumberTest, RefusesTextWithoutAPlausibleNumber) {
  for (const char* text : {"",
                           " ",
                           "1",
                           "+",
                           "+1",
                           "tel:",
                           "ext. 12",
                           "x12",
                           "123456789012345678901",
                           "*31#",
                           "#21#",
                           "call 112",
                           "112 or 113",
                           "555-HELP",
                           "112 x",
                           "112 ext 12 a",
                           "1+12",
                           "++112",
                           "112;ext=",
                           "112;=5",
                           "112;ext=1 2",
                           "112;a1=x",
                           "112,",
                           "112,a",
                           "112 ext "
                           "123456789012345678901",
                           "\u0661",
                           "11\u09E52",
                           "11\xC3",
                           "11\xE2\x80",
                           "11\xE2(\xA1",
                           "11\xFF",
                           "112\n",
                           "\U0001D7CF\U0001D7CF"}) {
    EXPECT_FALSE(PhoneNumber::withStringValue(text)) << text;
  }
  EXPECT_FALSE(PhoneNumber::withStringValue(std::string("112\0", 4)));
}

}  // namespace
}  // namespace quenlet
