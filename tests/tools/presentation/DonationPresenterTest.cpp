#include "tools/presentation/DonationPresenter.h"

#include <gtest/gtest.h>

#include "mecard/DonatedEntries.h"
#include "tests/support/DonationFactory.h"
#include "tests/support/GoldenFile.h"
#include "tools/presentation/CardPresenter.h"
#include "tools/presentation/StatePresenter.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

const std::string here = "tests/tools/presentation/";

TEST(DonationPresenterTest, WritesEveryKindOfValueAndEveryKey) {
  const auto origin = [](const std::string& n, std::optional<std::string> cluster = {}) {
    const double day = std::stod(n) * 86400;
    return DonationOrigin{"b" + n, "i" + n, std::move(cluster), Date(day), Date(day + 20 * 86400)};
  };
  const DonationValues values = {
      named({"Dr.", "Ann", "B.", "Berg", "Jr.", "Annie"}, origin("1")),
      phone("+49 30 1234567", origin("2", "c2"), "cell"),
      postal({.street = "Weg 1", .city = "Ulm", .isoCountryCode = "de"}, origin("3")),
      image("GIF89a", origin("4")), email("ann@example.org", origin("5"), "")};
  std::ostringstream out;
  DonationPresenter::writeTable(out, {.width = 100}, values);
  const StatedDonations stated = statesOf(listOf(values), OwnCard());
  StatePresenter::writeJSON(out, stated);
  EXPECT_EQ(out.str(), goldenFile(here + "donations.txt") + goldenLine(here + "donations.json"));
  out.str("");
  ContactFields fields;
  fields.namePrefix = "Dr.";
  fields.nickname = "Annie";
  fields.emailAddresses = {entryOf<std::string>(*values[4])};
  fields.phoneNumbers = {entryOf<PhoneNumber>(*values[1])};
  fields.postalAddresses = {entryOf<PostalAddress>(*values[2])};
  fields.imageData = std::make_shared<const std::string>("GIF89a");
  EXPECT_TRUE(CardPresenter::writeText(out, {}, Contact(fields), stated));
  CardPresenter::writeJSON(out, Contact(fields));
  EXPECT_EQ(out.str(), goldenFile(here + "card.txt") + goldenLine(here + "card.json"));
  EXPECT_EQ(imageText("RIFF1234WAVE"), "12 bytes, unknown type");
  out.str("");
  EXPECT_FALSE(CardPresenter::writeText(out, {}, Contact(), stated));
  CardPresenter::writeJSON(out, Contact());
  EXPECT_EQ(out.str(), R"({"name":{},"emailAddresses":[],"phoneNumbers":[],"postalAddresses":[],)"
                       "\"imageBytes\":0}\n");
}

TEST(DonationPresenterTest, KeepsDonorsFromSteeringTheTerminal) {
  for (const std::string hostile : {"\x1B", "\x07", "\n", "\x7F", "\xC2\x9B", "\xFF",
                                    "\xE2\x80\xAE", "\r", "\t", "\xE2\x81\xA6", "\xD8\x9C"}) {
    std::ostringstream out;
    DonationPresenter::writeTable(
        out, {}, {email("a" + hostile + "b", from("b" + hostile, "id"), "x" + hostile)});
    const std::string shown = out.str();
    EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), 2) << shown;
    EXPECT_TRUE(hostile == "\n" || shown.find(hostile) == std::string::npos) << shown;
  }
}

}  // namespace
}  // namespace quenlet
