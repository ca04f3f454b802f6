#include "tools/commands/DonationPresenter.h"

#include <gtest/gtest.h>

#include <sstream>

namespace quenlet {
namespace {

const DonationOrigin origin{"b\x1B[2J", "id", std::nullopt, Date(0), Date(86400)};

std::string table(const DonationValues& values) {
  std::ostringstream out;
  DonationPresenter::writeTable(out, values);
  return out.str();
}

std::string json(const DonationValues& values) {
  std::ostringstream out;
  DonationPresenter::writeJSON(out, values);
  const std::string text = out.str();
  return text.substr(1, text.find(",\"origin\"") - 1);
}

TEST(DonationPresenterTest, KeepsDonorsFromSteeringTheTerminal) {
  const std::string hostile[] = {"a\x1B]0;x\x07",
                                 "a\nb",
                                 "a\x7F",
                                 "a\xC2\x9B"
                                 "31m",
                                 "a\xFF",
                                 "a\xE2\x80\xAE"
                                 "b",
                                 "a\r",
                                 "a\t",
                                 "a\xE2\x81\xA6"};
  for (const std::string& text : hostile) {
    const std::string shown =
        table({DonationValue::donationValueWithEmailAddress(text, text, origin)});
    EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), 2) << shown;
    for (const char* forbidden :
         {"\x1B", "\x07", "\x7F", "\xC2\x9B", "\xFF", "\xE2\x80\xAE", "\r", "\t", "\xE2\x81\xA6"}) {
      EXPECT_EQ(shown.find(forbidden), std::string::npos) << shown;
    }
  }
}

TEST(DonationPresenterTest, AlignsColumnsByCharacters) {
  EXPECT_EQ(table({DonationValue::donationValueWithEmailAddress("é€@x", "", origin),
                   DonationValue::donationValueWithEmailAddress("plain@x", "work", origin)}),
            "KIND          VALUE    LABEL  BUNDLE  DONATION  DONATED     EXPIRES\n"
            "emailAddress  é€@x            b\uFFFD[2J   id        1970-01-01  1970-01-02\n"
            "emailAddress  plain@x  work   b\uFFFD[2J   id        1970-01-01  1970-01-02\n");
}

TEST(DonationPresenterTest, WritesEachKindAsJSON) {
  PersonNameComponents name;
  name.givenName = "Ann";
  name.nickname = "\"";
  PostalAddress address;
  address.city = "Ulm";
  const PhoneNumber number = *PhoneNumber::withStringValue("+49 30 1234567");
  const std::pair<DonationValuePtr, const char*> cases[] = {
      {DonationValue::donationValueWithNameComponents(name, origin),
       R"({"kind":"name","value":{"givenName":"Ann","nickname":"\""})"},
      {DonationValue::donationValueWithPhoneNumber(number, "cell", origin),
       R"({"kind":"phoneNumber","value":"+49 30 1234567","label":"cell")"},
      {DonationValue::donationValueWithPostalAddress(address, PostalAddressStyle::mailingAddress,
                                                     "", origin),
       R"({"kind":"postalAddress","value":{"city":"Ulm"},"label":"")"},
      {DonationValue::donationValueWithImageData("GIF89a", origin),
       R"({"kind":"imageData","value":6)"},
  };
  for (const auto& [value, expected] : cases) EXPECT_EQ(json({value}), expected);
  EXPECT_EQ(table({cases[3].first}).find("6 bytes, GIF") != std::string::npos, true);
}

}  // namespace
}  // namespace quenlet
