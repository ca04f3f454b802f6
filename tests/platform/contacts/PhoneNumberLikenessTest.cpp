#include <gtest/gtest.h>

#include "platform/contacts/PhoneNumber.h"
#include "platform/contacts/PhoneNumberLibrary.h"

namespace quenlet {
namespace {

TEST(PhoneNumberLikenessTest, ToleratesHowNumbersAreWrittenAndDialled) {
  // Alike are those of one row, in either order, and no others.
  const std::vector<std::vector<const char*>> rows = {
      {"+49 30 23125000", "+49 (0)30/231-25000", "tel:030-23125000", "0049 30 23125000", "23125000",
       "\u0660\u0663\u0660 \u0662\u0663\u0661\u0662\u0665\u0660\u0660\u0660"},
      {"+1 (202) 555-0143", "202.555.0143", "1 202 555 0143"},
      {"+1 212 555 0143"},
      {"001 212 555 0143 x1"},
      {"+44 212 555 0143", "0044 212 555 0143"},
      {"+54 9 11 2312 3456", "011 15-2312-3456"},
      {"+44 20 7946 0958 x21", "+442079460958;ext=21", "020 7946 0958,,21#"},
      {"+44 20 7946 0958 ext. 22"},
      {"+44 20 7946 0958"},
      {"+298 301234", "30 12 34", "00298 301234"},
      {"401234"},
      {"+999 1401230"},
      {"112", "1-1-2"},
      {"+49 112"},
      {"0112"},
      {"98765432101234567"},
      {"88765432101234567"},
      {"90098765432101234567"},
  };
  for (std::size_t row = 0; row < rows.size(); ++row) {
    for (std::size_t otherRow = 0; otherRow < rows.size(); ++otherRow) {
      for (const char* text : rows[row]) {
        for (const char* otherText : rows[otherRow]) {
          const PhoneNumber a = *PhoneNumber::withStringValue(text);
          const PhoneNumber b = *PhoneNumber::withStringValue(otherText);
          EXPECT_EQ(a.isLikePhoneNumber(b), row == otherRow) << text << " and " << otherText;
          if (row == otherRow) {
            EXPECT_EQ(a.likeness().key, b.likeness().key);
          }
        }
      }
    }
  }
}

TEST(PhoneNumberLikenessTest, KnowsNoCountriesWithoutTheModuleAndSaysSoOnce) {
  for (const char* module : {"/missing/phone-numbers.so", "phone-numbers.so"}) {
    testing::internal::CaptureStderr();
    const PhoneNumberLibrary library(module);
    EXPECT_FALSE(library.read("+12025550143"));
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << told;
  }
}

}  // namespace
}  // namespace quenlet
