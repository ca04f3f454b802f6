#include "donors/browser/FirefoxDonations.h"

#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

// Files made after the sources of Firefox 115 and 128 (FormAutofillStorageBase.sys.mjs).
class FirefoxDonationsTest : public testing::Test {
 protected:
  FirefoxDonationsTest() {
    home.write(".mozilla/firefox/profiles.ini",
               "[General]\nVersion=2\n\n[Profile0]\nIsRelative=1\nPath=x.default\n");
    home.write(".mozilla/firefox/x.default/times.json", "{}");
  }

  // "kind:text " of each; or "!" and the error's sentence.
  std::string donated(const OwnersName& owner = OwnersName("Zoë Berg")) const {
    const auto all = firefoxDonations({home.path(), home / ".config"}, owner);
    if (!all.ok()) return "!" + all.error()->debugDescription();
    std::string text;
    for (const Donation& donation : all.value()) {
      EXPECT_TRUE(donation.donationIdentifier.starts_with(*donation.clusterIdentifier + ":"));
      text += std::visit([](const auto& content) { return textOf(content); }, donation.content);
    }
    return text;
  }
  std::string donatedOf(const std::string& json) const {
    home.write(".mozilla/firefox/x.default/autofill-profiles.json", json);
    return donated();
  }
  static std::string textOf(const Postal& postal) {
    const Address& address = postal.address;
    return "postal:" + address.street + "|" + address.city + "|" + address.state + "|" +
           address.postalCode + "|" + address.country + "|" + address.isoCountryCode + " ";
  }
  static std::string textOf(const Email& email) { return "email:" + email.address + " "; }
  static std::string textOf(const Phone& phone) { return "phone:" + phone.number + " "; }
  static std::string textOf(const Name& of) {
    return "name:" + *of.givenName + "|" + of.middleName.value_or("") + "|" + *of.familyName + " ";
  }
  static std::string textOf(const Image&) { return "image "; }

  const TemporaryDirectory home;
};

TEST_F(FirefoxDonationsTest, GivesTheOwnersAddressesAndNobodyElses) {
  EXPECT_EQ(donated(), "") << "no file";
  const std::string zoe = R"({"guid":"a1","version":1,"given-name":"ZOE\u0308","family-name":"Berg",
    "additional-name":"M","street-address":"Elm Street 9\nRear","address-level2":"Bonn","address-level1":"NW",
    "postal-code":"53111","country":"DE","country-name":"Germany","tel":"+492281234567",
    "email":"zoe@example.org","timesUsed":4,"_sync":{"changeCounter":1,"email":"x@example.org"}})";
  const std::pair<std::string, const char*> rows[] = {
      {zoe,
       "postal:Elm Street 9\nRear|Bonn|NW|53111|Germany|de email:zoe@example.org "
       "phone:+492281234567 name:ZOE\u0308|M|Berg "},
      {R"({"guid":"b","name":"Zoë Berg","email":"z@example.org"})",
       "email:z@example.org name:Zoë||Berg "},
      {R"({"guid":"c","given-name":"Ann","family-name":"Berg","email":"ann@example.org"})", ""},
      {R"({"guid":"d","given-name":"Zoë","email":"zoe@example.org"})", ""},
      {R"({"guid":"e","email":"zoe@example.org"})", ""},
      {R"({"guid":"f","deleted":true,"name":"Zoë Berg","email":"z@example.org"})", ""},
      {R"({"guid":"g","name":"Zoë Berg","email":"z+shop@example.org","tel":"none"})", ""},
      {R"({"guid":"i","name":"Zoë Berg","email":"z@example.org","street-address":"\u001b[2J"})",
       "email:z@example.org name:Zoë||Berg "},
      {R"({"guid":"h","name":"Zoë Berg","country":"DE"})", ""},
  };
  const std::string cards =
      R"(,"creditCards":[{"cc-name":"Zoë Berg","name":"Zoë Berg","email":"card@example.org"}]})";
  for (const auto& [one, expected] : rows) {
    EXPECT_EQ(donatedOf("{\"version\":1,\"addresses\":[" + one + "]" + cards), expected) << one;
  }
  EXPECT_EQ(donatedOf("{\"addresses\":[" + zoe + "]}").substr(0, 6), "postal");
  EXPECT_EQ(donated(OwnersName("zoe")), "") << "a login name names nobody";
}

TEST_F(FirefoxDonationsTest, TakesDamageForDamage) {
  const std::string place = "!autofill-profiles.json of profile 1: ";
  const std::pair<std::string, std::string> rows[] = {
      {"", place + "it is cut short or damaged"},
      {R"({"addresses":[{"name":"Zoë Berg","email":"z@exam)", place + "it is cut short or damaged"},
      {R"({"addresses":[]}])", place + "it is cut short or damaged"},
      {"{\"addresses\":[{\"name\":\"\xFF\"}]}", place + "it is cut short or damaged"},
      {"{\"x\":" + std::string(40, '[') + std::string(40, ']') + "}",
       place + "it is cut short or damaged"},
      {"[]", place + "it holds no list of addresses"},
      {R"({"addresses":{"name":"Zoë Berg"}})", place + "it holds no list of addresses"},
      {R"({"addresses":[["Zoë Berg"]]})", place + "it holds no list of addresses"},
      {R"({"addresses":["Zoë Berg"]})", place + "it holds no list of addresses"},
      {"{}", ""},
  };
  for (const auto& [json, expected] : rows) EXPECT_EQ(donatedOf(json), expected) << json;
}

TEST_F(FirefoxDonationsTest, KnowsTheOwnerByTheirOwnCard) {
  home.write("Library/Contacts/me.vcf",
             "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:Ann Berg\r\nN:Berg;Ann;;;\r\nEND:VCARD\r\n");
  const UserPlaces places{home.path(), home / ".config"};
  const auto who = OwnersName::find(places);
  ASSERT_TRUE(who.ok());
  EXPECT_TRUE(who.value().isThatOf({.givenName = "ANN", .middleName = "M", .familyName = "berg"}));
  EXPECT_FALSE(who.value().isThatOf({.givenName = "Zoë", .familyName = "Berg"}));
  home.write("Library/Contacts/me.vcf", "damaged");
  EXPECT_FALSE(OwnersName::find(places).ok());
}

}  // namespace
}  // namespace quenlet
