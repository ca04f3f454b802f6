#include <gtest/gtest.h>

#include "platform/contacts/PhoneNumber.h"
#include "platform/contacts/PhoneNumberMatcher.h"

namespace quenlet {
namespace {

TEST(PhoneNumberLikenessTest, IsSymmetricAndToleratesHowNumbersAreWrittenAndDialled) {
  const struct {
    const char* a;
    const char* b;
    bool alike;
  } rows[] = {
      {"+49 30 23125000", "+49 (0)30/231-25000", true},
      {"+49 30 23125000", "tel:030-23125000", true},
      {"030 23125000", "\u0660\u0663\u0660 \u0662\u0663\u0661\u0662\u0665\u0660\u0660\u0660", true},
      {"+1 (202) 555-0143", "202.555.0143", true},
      {"1 202 555 0143", "202 555 0143", true},
      {"+1 202 555 0143", "555 0143", true},
      {"+54 9 11 2312 3456", "011 15-2312-3456", true},
      {"+44 20 7946 0958 x21", "+442079460958;ext=21", true},
      {"+44 20 7946 0958 x21", "020 7946 0958,,21#", true},
      {"+44 20 7946 0958 x21", "+44 20 7946 0958 ext. 22", false},
      {"+44 20 7946 0958 x21", "+44 20 7946 0958", false},
      {"+1 202 555 0143", "+1 212 555 0143", false},
      {"112", "1-1-2", true},
      {"112", "+49 112", false},
      {"555014", "+1 202 155 5014", false},
  };
  for (const auto& [a, b, alike] : rows) {
    const PhoneNumber first = *PhoneNumber::withStringValue(a);
    const PhoneNumber second = *PhoneNumber::withStringValue(b);
    EXPECT_EQ(first.isLikePhoneNumber(second), alike) << a << " and " << b;
    EXPECT_EQ(second.isLikePhoneNumber(first), alike) << b << " and " << a;
    if (alike) {
      EXPECT_EQ(first.likenessKey(), second.likenessKey()) << a << " and " << b;
    }
  }
}

TEST(PhoneNumberLikenessTest, FallsBackToDigitsWithoutTheModuleAndSaysSoOnce) {
  for (const char* module : {"/missing/phone-numbers.so", "phone-numbers.so"}) {
    testing::internal::CaptureStderr();
    const PhoneNumberMatcher matcher(module);
    EXPECT_TRUE(matcher.areSameNumber("+12025550143", "+12025550143"));
    EXPECT_FALSE(matcher.areSameNumber("+12025550143", "2025550143"));
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << told;
  }
}

}  // namespace
}  // namespace quenlet
