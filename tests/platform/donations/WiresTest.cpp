#include <gtest/gtest.h>

#include "platform/donations/AccountWire.h"
#include "platform/donations/ContactWire.h"
#include "platform/donations/CorvelInterface.h"
#include "platform/donations/DonationError.h"
#include "platform/donations/DonationWire.h"
#include "platform/ipc/ErrorWire.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

constexpr auto invalid = static_cast<std::int64_t>(ServiceErrorCode::invalidArguments);

using Entries = PropertyListDictionary;

Result<DonationValues> decodeDonations(const WireEncoder& encoder) {
  WireReader reader(encoder.bytes());
  const auto decoded = DonationWire::decode(reader);
  EXPECT_TRUE(reader.atEnd() || !decoded.isLeft());
  return decoded;
}

TEST(DonationWireTest, CarriesRecordsAndRefusesOthers) {
  const DonationValues values = {email("a@x", from("app", "1", "c")), image("\xff")};
  WireEncoder good;
  DonationWire::encode(good, values);
  const DonationValues decoded = decodeDonations(good).left();
  ASSERT_EQ(decoded.size(), 2u);
  EXPECT_EQ(*decoded[0], *values[0]);
  EXPECT_EQ(*decoded[1], *values[1]);

  const Entries record = values[0]->propertyListRepresentation();
  const Entries control = email("\x01")->propertyListRepresentation();
  const struct {
    const char* name;
    WireEncoder encoder;
    std::int64_t code;
  } rows[] = {
      {"no list", WireEncoder().string("x"), invalid},
      {"plain element", WireEncoder().list(1).propertyList(record), invalid},
      {"other class", WireEncoder().list(1).object("Account").propertyList(record), invalid},
      {"object inside",
       WireEncoder().list(1).object("DonationValue").object("DonationValue").null(), invalid},
      {"one bad of two",
       WireEncoder()
           .list(2)
           .object("DonationValue")
           .propertyList(record)
           .object("DonationValue")
           .dictionary(0),
       invalid},
      {"text that no file holds",
       WireEncoder().list(1).object("DonationValue").propertyList(control), 501},
  };
  for (const auto& row : rows) {
    const Result<DonationValues> result = decodeDonations(row.encoder);
    ASSERT_FALSE(result.isLeft()) << row.name;
    EXPECT_EQ(result.right()->code(), row.code) << row.name;
  }
}

TEST(ContactWireTest, CarriesAContactAndRefusesOthers) {
  const auto plain = std::make_shared<const LabeledValue<std::string>>(
      LabeledValue<std::string>{"work", "a@x", {}});
  ContactFields fields;
  fields.givenName = "Ann";
  fields.nickname = "A";
  fields.emailAddresses = {email("b@x")->emailEntry(), plain};
  fields.phoneNumbers = {phone("+49 30 1")->phoneEntry()};
  fields.postalAddresses = {postal({.city = "B"})->postalEntry(), postal({})->postalEntry()};
  fields.imageData = std::make_shared<const std::string>("\xff");
  const Contact full(fields);
  for (const Contact& contact : {Contact(), full}) {
    WireEncoder encoder;
    ContactWire::encode(encoder, contact);
    ContactWire::encodeEither(encoder, Result<std::shared_ptr<const Contact>>::left(
                                           std::make_shared<const Contact>(contact)));
    WireReader reader(encoder.bytes());
    EXPECT_EQ(*ContactWire::decode(reader), contact);
    EXPECT_EQ(*ContactWire::decodeEither(reader).left(), contact);
    EXPECT_TRUE(reader.atEnd());
  }
  const Entries number{{"label", "h"}, {"value", "none"}};
  const Entries noLabel{{"value", "a@x"}};
  const Entries badOrigin{{"label", "h"}, {"value", "a@x"}, {"valueOrigin", Entries{}}};
  const Entries plainOrigin{{"label", "h"}, {"value", "a@x"}, {"valueOrigin", "app"}};
  for (const Entries& bad : {Entries{{"phoneNumbers", PropertyListArray{number}}},
                             Entries{{"emailAddresses", PropertyListArray{noLabel}}},
                             Entries{{"emailAddresses", PropertyListArray{badOrigin}}},
                             Entries{{"emailAddresses", PropertyListArray{plainOrigin}}},
                             Entries{{"emailAddresses", "a@x"}}, Entries{{"imageData", "x"}},
                             Entries{{"givenName", 1}}}) {
    WireEncoder encoder;
    encoder.object(ContactWire::className).propertyList(bad);
    WireReader reader(encoder.bytes());
    EXPECT_EQ(ContactWire::decode(reader), nullptr) << bad.begin()->first;
    EXPECT_TRUE(reader.atEnd());
  }
}

TEST(ContactWireTest, CarriesEitherSideAndTakesOthersForMalformed) {
  const auto decode = [](const WireEncoder& encoder) {
    WireReader reader(encoder.bytes());
    return ContactWire::decodeEither(reader);
  };
  const ErrorPtr error = makeDonationError(DonationErrorCode::featureNotEnabled, "why");
  WireEncoder right;
  ContactWire::encodeEither(right, Result<std::shared_ptr<const Contact>>::right(error));
  EXPECT_EQ(*decode(right).right(), *error);
  const auto malformed = static_cast<std::int64_t>(ServiceErrorCode::malformedMessage);
  for (const WireEncoder& bad :
       {WireEncoder(), WireEncoder().null(), WireEncoder().object("Either").null(),
        WireEncoder().object("Contact").dictionary(0),
        WireEncoder().object("Either").object("Either").object("Contact").dictionary(0)}) {
    EXPECT_EQ(decode(bad).right()->code(), malformed);
  }
}

TEST(AccountWireTest, CarriesAnAccountOrNone) {
  const auto account = std::make_shared<const Account>(Account{.identifier = "a"});
  WireEncoder encoder;
  AccountWire::encode(encoder, account);
  AccountWire::encode(encoder, nullptr);
  encoder.object("Contact").dictionary(0).string("x").object("Account").dictionary(0);
  WireReader reader(encoder.bytes());
  EXPECT_EQ(*AccountWire::decode(reader).left(), *account);
  EXPECT_EQ(AccountWire::decode(reader).left(), nullptr);
  EXPECT_EQ(AccountWire::decode(reader).right()->code(), invalid);
  EXPECT_EQ(reader.string(), "x");
  EXPECT_EQ(AccountWire::decode(reader).right()->code(), invalid);
  EXPECT_TRUE(reader.atEnd());
}

}  // namespace
}  // namespace quenlet
