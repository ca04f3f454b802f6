#include <gtest/gtest.h>

#include <cmath>

#include "mecard/DonatedEntries.h"
#include "platform/ipc/ErrorWire.h"
#include "protocol/AccountWire.h"
#include "protocol/ContactWire.h"
#include "protocol/DonationWire.h"
#include "protocol/EncodedReplies.h"
#include "quenlet/ErrorCodes.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

constexpr auto badArguments = static_cast<std::int64_t>(ServiceErrorCode::invalidArguments);

using Entries = PropertyListDictionary;

// That good values are carried is the golden bytes' to show.
TEST(DonationWireTest, RefusesWhatIsNoRecordThatAFileHolds) {
  const Entries record = email("a@x")->propertyListRepresentation();
  const Entries control = email("\x01")->propertyListRepresentation();
  const Entries large = email(std::string(65'537, 'a'))->propertyListRepresentation();
  const Entries nameless = email("a@b", from("app", ""))->propertyListRepresentation();
  WireEncoder held;
  held.list(1).object("DonationValue").propertyList(large);
  WireReader listed(held.bytes());
  EXPECT_TRUE(DonationWire::decode(listed).ok()) << "older files may hold more";
  const auto list = [] { return WireEncoder().list(1); };
  const std::tuple<const char*, WireEncoder, std::int64_t> rows[] = {
      {"no list", WireEncoder().string("x"), badArguments},
      {"plain element", list().propertyList(record), badArguments},
      {"object inside", list().object("DonationValue").object("DonationValue").null(),
       badArguments},
      {"text that no file holds", list().object("DonationValue").propertyList(control), 501},
      {"text beyond the bound", list().object("DonationValue").propertyList(large), 501},
      {"no identifier", list().object("DonationValue").propertyList(nameless), 501},
  };
  for (const auto& [name, encoder, code] : rows) {
    WireReader bad(encoder.bytes());
    const Result<DonationValues> result = DonationWire::decodeDonated(bad);
    EXPECT_EQ(result.ok() ? 0 : result.error()->code(), code) << name;
  }
}

TEST(AccountWireTest, RefusesWhatNoFileHolds) {
  WireEncoder encoder;
  AccountWire::encode(encoder, std::make_shared<const Account>(Account{"1", {}, "\x01"}));
  WireReader reader(encoder.bytes());
  EXPECT_EQ(AccountWire::decode(reader, {}).error()->code(), 501);
}

TEST(ContactWireTest, CarriesWhatIsEmptyAndRefusesWhatIsNoContact) {
  ContactFields fields;
  fields.postalAddresses = {entryOf<PostalAddress>(*postal({}))};
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

TEST(EncodedDonationsTest, AreTheWholeListWhateverTheirPieces) {
  for (const auto& [count, imageSize, pieces] :
       {std::tuple(0, 1, 1), std::tuple(3, 5, 1), std::tuple(3, 300'000, 3),
        std::tuple(9, 200'000, 5)}) {
    DonationValues values;
    const std::string bytes(imageSize, 'i');
    for (int i = 0; i < count; ++i) values.push_back(image(bytes, from("app", std::to_string(i))));
    WireEncoder whole;
    DonationWire::encode(whole, values);
    ErrorWire::encode(whole, nullptr);
    const EncodedDonations reply(listOf(values));
    std::string joined;
    for (std::size_t i = 0; i < reply.pieceCount(); ++i) joined += *reply.piece(i);
    EXPECT_EQ(joined, whole.bytes()) << count;
    EXPECT_EQ(joined.size(), reply.sizeInBytes()) << count;
    EXPECT_EQ(reply.pieceCount(), pieces) << count;
  }
}

TEST(EncodedDonationsTest, AreSharedByThoseWhoReadTheSameList) {
  const DonationValues images(9, image(std::string(200'000, 'i')));
  const auto list = listOf(images);
  DonationListReplies replies;
  const EncodedReplyPtr reply = replies.replyFor(list);
  EXPECT_EQ(replies.replyFor(list), reply);
  const auto piece = reply->piece(1);
  EXPECT_EQ(reply->piece(1), piece);
  EXPECT_NE(replies.replyFor(listOf(images)), reply);
}

}  // namespace
}  // namespace quenlet
