#include <gtest/gtest.h>

#include <cmath>

#include "mecard/DonatedEntries.h"
#include "platform/ipc/ServiceInterface.h"
#include "protocol/AccountWire.h"
#include "protocol/ContactWire.h"
#include "protocol/DonationWire.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

constexpr auto invalid = static_cast<std::int64_t>(ServiceErrorCode::invalidArguments);

using Entries = PropertyListDictionary;

TEST(DonationWireTest, CarriesRecordsAndRefusesOthers) {
  const DonationValues values = {email("a@x", from("app", "1", "c")), image("\xff")};
  WireEncoder good;
  DonationWire::encode(good, values);
  WireReader reader(good.bytes());
  const DonationValues read = DonationWire::decode(reader).value();
  ASSERT_EQ(read.size(), 2u);
  EXPECT_TRUE(*read[0] == *values[0] && *read[1] == *values[1]);

  const Entries record = values[0]->propertyListRepresentation();
  const Entries control = email("\x01")->propertyListRepresentation();
  const Entries large = email(std::string(65'537, 'a'))->propertyListRepresentation();
  const Entries nameless = email("a@b", from("app", ""))->propertyListRepresentation();
  WireEncoder held;
  held.list(1).object("DonationValue").propertyList(large);
  WireReader listed(held.bytes());
  EXPECT_TRUE(DonationWire::decode(listed).ok()) << "older files may hold more";
  const auto list = [](std::size_t count = 1) { return WireEncoder().list(count); };
  const std::tuple<const char*, WireEncoder, std::int64_t> rows[] = {
      {"no list", WireEncoder().string("x"), invalid},
      {"plain element", list().propertyList(record), invalid},
      {"object inside", list().object("DonationValue").object("DonationValue").null(), invalid},
      {"one bad of two", list(2).object("DonationValue").propertyList(record).null(), invalid},
      {"text that no file holds", list().object("DonationValue").propertyList(control), 501},
      {"text beyond the bound", list().object("DonationValue").propertyList(large), 501},
      {"no identifier", list().object("DonationValue").propertyList(nameless), 501},
  };
  for (const auto& [name, encoder, code] : rows) {
    WireReader bad(encoder.bytes());
    const Result<DonationValues> result = DonationWire::decodeDonated(bad);
    ASSERT_FALSE(result.ok()) << name;
    EXPECT_EQ(result.error()->code(), code) << name;
  }
}

TEST(AccountWireTest, CarriesAccountsAndRefusesWhatNoFileHolds) {
  for (const auto& [text, code] : {std::pair("a", 0), std::pair("\x01", 501)}) {
    const auto account = std::make_shared<const Account>(Account{"1", {}, text});
    WireEncoder encoder;
    AccountWire::encode(encoder, account);
    WireReader reader(encoder.bytes());
    const Result<AccountPtr> read = AccountWire::decode(reader, {});
    EXPECT_EQ(read.ok() ? 0 : read.error()->code(), code);
    EXPECT_TRUE(!read.ok() || *read.value() == *account);
  }
}

TEST(ContactWireTest, CarriesAContactAndRefusesOthers) {
  ContactFields fields;
  fields.givenName = "Ann";
  fields.emailAddresses = {entryOf<std::string>(*email("b@x"))};
  fields.phoneNumbers = {entryOf<PhoneNumber>(*phone("+49 30 1"))};
  fields.postalAddresses = {entryOf<PostalAddress>(*postal({.city = "B"})),
                            entryOf<PostalAddress>(*postal({}))};
  fields.imageData = std::make_shared<const std::string>("\xff");
  const auto decoded = [](const WireEncoder& encoder) {
    WireReader reader(encoder.bytes());
    return ContactWire::decode(reader);
  };
  for (const Contact& contact : {Contact(), Contact(fields)}) {
    WireEncoder encoder;
    ContactWire::encode(encoder, contact);
    const auto read = decoded(encoder);
    EXPECT_TRUE(read && *read == contact);
  }
  const auto addresses = [](const Entries& entry) {
    return Entries{{"emailAddresses", PropertyListArray{entry}}};
  };
  Entries never = *findDictionary(email("a@x")->propertyListRepresentation(), "origin");
  never.insert_or_assign("donationDate", std::nan(""));
  const Entries number{{"label", "h"}, {"value", "none"}};
  for (const Entries& bad :
       {Entries{{"phoneNumbers", PropertyListArray{number}}}, addresses({{"value", "a@x"}}),
        addresses({{"label", "h"}, {"value", "a@x"}, {"valueOrigin", Entries{}}}),
        addresses({{"label", "h"}, {"value", "a@x"}, {"valueOrigin", never}}),
        Entries{{"emailAddresses", "a@x"}}, Entries{{"givenName", 1}}}) {
    const WireEncoder encoder = WireEncoder().object("Contact").propertyList(bad).boolean(true);
    WireReader reader(encoder.bytes());
    EXPECT_EQ(ContactWire::decode(reader), nullptr) << bad.begin()->first;
    EXPECT_EQ(reader.boolean(), true) << "nothing but the contact was read";
  }
  const Entries later{{"aaa", addresses({})}, {"givenName", "Ann"}, {"zzz", 1}};
  const auto read = decoded(WireEncoder().object("Contact").propertyList(later));
  EXPECT_TRUE(read && read->givenName() == "Ann") << "what is not known is passed over";
}

TEST(ContactWireTest, TakesNothingElseForAnOutcome) {
  for (const WireEncoder& bad :
       {WireEncoder(), WireEncoder().null(), WireEncoder().object("Either").null(),
        WireEncoder().object("Contact").dictionary(0)}) {
    WireReader reader(bad.bytes());
    EXPECT_EQ(ContactWire::decodeEither(reader).error()->code(),
              static_cast<std::int64_t>(ServiceErrorCode::malformedMessage));
  }
}

}  // namespace
}  // namespace quenlet
