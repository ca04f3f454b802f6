#include "platform/contacts/PhoneNumber.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quenlet {
namespace {

TEST(PhoneNumberTest, KeepsTheTextAndFindsItsDigits) {
  const std::pair<const char*, const char*> cases[] = {
      {"12345678901234567890", "12345678901234567890"},
      {"+1.202.555-0101", "+12025550101"},
      {"[030]/23125 000", "03023125000"},
      {" \u202A+49\u00A030\u201323125\u202C\t", "+493023125"},
      {"+49 (0)30 23125", "+493023125"},
      {"tel:+49-30-23125;ext=5", "+493023125"},
      {"TEL: 7042;phone-context=example.com;ext=5", "7042"},
      {"202 555 0101 x12", "2025550101"},
      {"202 555 0101 Ext. \u0661\u0662", "2025550101"},
      {"202 555 0101#12 ", "2025550101"},
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
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"too short", {"", "1", "+1", "tel:", "ext. 12", "\u0661"}},
      {"too long", {"123456789012345678901", "112 ext 123456789012345678901"}},
      {"more than a number", {"*31#", "call 112", "112 or 113", "555-HELP", "1+12", "++112"}},
      {"bad extension", {"112 x", "112 ext 12 a", "112;ext=", "112;=5", "112;ext=1 2", "112,a"}},
      {"foreign characters", {"11\u09E52", "\U0001D7CF\U0001D7CF", std::string("112\0", 4)}},
      {"foreign bytes", {"112\n", "11\xC3", "11\xE2\x80", "11\xE2(\xA1", "11\xFF"}},
  };
  for (const auto& [name, texts] : cases) {
    for (const auto& text : texts) {
      EXPECT_FALSE(PhoneNumber::withStringValue(text)) << name << ": " << text;
    }
  }
}

}  // namespace
}  // namespace quenlet
