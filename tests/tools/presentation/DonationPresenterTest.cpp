#include "tools/presentation/DonationPresenter.h"

#include <gtest/gtest.h>

#include <sstream>

#include "mecard/DonatedEntries.h"
#include "tests/support/DonationFactory.h"
#include "tools/presentation/CardPresenter.h"
#include "tools/presentation/StatePresenter.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

TEST(DonationPresenterTest, WritesEveryKindOfValueAndEveryKey) {
  const auto origin = [](const std::string& n, std::optional<std::string> cluster = {}) {
    const double day = std::stod(n) * 86400;
    return DonationOrigin{"b" + n, "i" + n, std::move(cluster), Date(day), Date(day + 20 * 86400)};
  };
  const auto originJSON = [](const std::string& n, const std::string& cluster = {}) {
    const std::string day = std::to_string(std::stoi(n) + 1) + "T00:00:00Z\"";
    return R"("origin":{"bundleIdentifier":"b)" + n + R"(","donationIdentifier":"i)" + n + "\"," +
           cluster + R"("donationDate":"1970-01-0)" + day + R"(,"expirationDate":"1970-01-2)" +
           day + "}}";
  };
  const DonationValues values = {
      named({"Dr.", "Ann", "B.", "Berg", "Jr.", "Annie"}, origin("1")),
      phone("+49 30 1234567", origin("2", "c2"), "cell"),
      postal({.street = "Weg 1", .city = "Ulm", .isoCountryCode = "de"}, origin("3")),
      image("GIF89a", origin("4")), email("ann@example.org", origin("5"), "")};
  const std::string phoneJSON = R"("value":"+49 30 1234567","label":"cell",)" +
                                originJSON("2", R"("clusterIdentifier":"c2",)");
  const std::string postalJSON =
      R"("value":{"city":"Ulm","isoCountryCode":"de","street":"Weg 1"},"label":"home",)" +
      originJSON("3");
  const std::string emailJSON = R"("value":"ann@example.org",)" + originJSON("5");
  std::ostringstream out;
  DonationPresenter::writeTable(out, {.width = 100}, values);
  const StatedDonations stated =
      statesOf(std::make_shared<const DonationValues>(values), OwnCard());
  StatePresenter::writeJSON(out, stated);
  // The object with what is known of its place.
  const auto listed = [](const std::string& object, const char* number) {
    return object.substr(0, object.size() - 1) + R"(,"number":)" + number + R"(,"state":"shown"})";
  };
  EXPECT_EQ(
      out.str(),
      R"(KIND     VALUE                        LABEL  BUNDLE  EXPIRES     DONATION  CLUSTER  DONATED
name     Dr. Ann B. Berg Jr. "Annie"         b1      1970-01-22  i1                 1970-01-02
phone    +49 30 1234567               cell   b2      1970-01-23  i2        c2       1970-01-03
address  Weg 1, Ulm                   home   b3      1970-01-24  i3                 1970-01-04
image    6 bytes, GIF                        b4      1970-01-25  i4                 1970-01-05
e-mail   ann@example.org                     b5      1970-01-26  i5                 1970-01-06
[{"kind":"name","value":{"familyName":"Berg","givenName":"Ann","middleName":"B.","namePrefix":"Dr.",)"
      R"("nameSuffix":"Jr.","nickname":"Annie"},)" +
          listed(originJSON("1"), "1") + R"(,{"kind":"phoneNumber",)" + listed(phoneJSON, "2") +
          R"(,{"kind":"postalAddress",)" + listed(postalJSON, "3") +
          R"(,{"kind":"imageData","value":6,)" + listed(originJSON("4"), "4") +
          R"(,{"kind":"emailAddress",)" + listed(emailJSON, "5") + "]\n");
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
  EXPECT_EQ(out.str(), R"(Name
  Dr. "Annie"

E-mail
  5  ann@example.org  from b5  until 1970-01-26

Phone
  2  +49 30 1234567  cell  from b2  until 1970-01-23

Address
  3  Weg 1, Ulm  home  from b3  until 1970-01-24

Image
  6 bytes, GIF
{"name":{"namePrefix":"Dr.","nickname":"Annie"},"emailAddresses":[{)" +
                           emailJSON + R"(],"phoneNumbers":[{)" + phoneJSON +
                           R"(],"postalAddresses":[{)" + postalJSON + R"(],"imageBytes":6})" +
                           "\n");
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
