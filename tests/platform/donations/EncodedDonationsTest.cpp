#include "platform/donations/EncodedDonations.h"

#include <gtest/gtest.h>

#include "platform/donations/DonationWire.h"
#include "platform/ipc/ErrorWire.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

std::string joined(const EncodedReply& reply) {
  std::string bytes;
  for (std::size_t i = 0; i < reply.pieceCount(); ++i) bytes += *reply.piece(i);
  EXPECT_EQ(bytes.size(), reply.sizeInBytes());
  return bytes;
}

TEST(EncodedDonationsTest, AreTheWholeListWhateverTheirPieces) {
  for (const auto& [count, imageSize, pieces] :
       {std::tuple(0, 1, 1), std::tuple(3, 5, 1), std::tuple(3, 300'000, 3),
        std::tuple(9, 200'000, 5)}) {
    DonationValues values;
    for (int i = 0; i < count; ++i) {
      values.push_back(image(std::string(static_cast<std::size_t>(imageSize), 'i'),
                             from("app", "image-" + std::to_string(i))));
    }
    WireEncoder whole;
    DonationWire::encode(whole, values);
    ErrorWire::encode(whole, nullptr);
    const EncodedDonations reply(std::make_shared<const DonationValues>(values));
    EXPECT_EQ(joined(reply), whole.bytes()) << count;
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
