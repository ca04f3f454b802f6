#include "tools/commands/DonationPresenter.h"

#include <gmock/gmock.h>

#include <sstream>

#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

const DonationOrigin origin{"b\x1B[2J", "id", std::nullopt, Date(0), Date(86400)};

std::string table(const DonationValues& values) {
  std::ostringstream out;
  DonationPresenter::writeTable(out, values);
  return out.str();
}

TEST(DonationPresenterTest, KeepsDonorsFromSteeringTheTerminal) {
  for (const std::string hostile : {"\x1B", "\x07", "\n", "\x7F", "\xC2\x9B", "\xFF",
                                    "\xE2\x80\xAE", "\r", "\t", "\xE2\x81\xA6"}) {
    const std::string shown = table({email("a" + hostile + "b", origin, "x" + hostile)});
    EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), 2) << shown;
    EXPECT_TRUE(hostile == "\n" || shown.find(hostile) == std::string::npos) << shown;
  }
}

TEST(DonationPresenterTest, AlignsColumnsByCharacters) {
  EXPECT_EQ(table({email("é€@x", origin, ""), email("plain@x", origin, "work")}),
            "KIND          VALUE    LABEL  BUNDLE  DONATION  DONATED     EXPIRES\n"
            "emailAddress  é€@x            b\uFFFD[2J   id        1970-01-01  1970-01-02\n"
            "emailAddress  plain@x  work   b\uFFFD[2J   id        1970-01-01  1970-01-02\n");
}

TEST(DonationPresenterTest, WritesEachKindAsJSON) {
  const std::pair<DonationValuePtr, const char*> rows[] = {
      {named({.givenName = "Ann", .nickname = "\""}),
       R"([{"kind":"name","value":{"givenName":"Ann","nickname":"\""},"origin")"},
      {phone("+49 30 1234567", origin, "cell"),
       R"([{"kind":"phoneNumber","value":"+49 30 1234567","label":"cell","origin")"},
      {postal({.city = "Ulm"}),
       R"([{"kind":"postalAddress","value":{"city":"Ulm"},"label":"home","origin")"},
      {image("GIF89a"), R"([{"kind":"imageData","value":6,"origin")"},
  };
  for (const auto& [value, expected] : rows) {
    std::ostringstream out;
    DonationPresenter::writeJSON(out, {value});
    EXPECT_THAT(out.str(), testing::StartsWith(expected));
  }
  EXPECT_THAT(table({image("GIF89a")}), testing::HasSubstr("6 bytes, GIF"));
}

}  // namespace
}  // namespace quenlet
