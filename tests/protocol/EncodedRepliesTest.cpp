#include "protocol/EncodedReplies.h"

#include <gtest/gtest.h>

#include "platform/ipc/ErrorWire.h"
#include "protocol/DonationWire.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

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
    const EncodedDonations reply(std::make_shared<const DonationValues>(values));
    std::string joined;
    for (std::size_t i = 0; i < reply.pieceCount(); ++i) joined += *reply.piece(i);
    EXPECT_EQ(joined, whole.bytes()) << count;
    EXPECT_EQ(joined.size(), reply.sizeInBytes()) << count;
    EXPECT_EQ(reply.pieceCount(), pieces) << count;
  }
}

TEST(EncodedDonationsTest, AreSharedByThoseWhoReadTheSameList) {
  const DonationValues images(9, image(std::string(200'000, 'i')));
  const auto list = std::make_shared<const DonationValues>(images);
  DonationListReplies replies;
  const EncodedReplyPtr reply = replies.replyFor(list);
  EXPECT_EQ(replies.replyFor(list), reply);
  const auto piece = reply->piece(1);
  EXPECT_EQ(reply->piece(1), piece);
  EXPECT_NE(replies.replyFor(std::make_shared<const DonationValues>(images)), reply);
}

}  // namespace
}  // namespace quenlet
