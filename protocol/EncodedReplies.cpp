#include "protocol/EncodedReplies.h"

#include <utility>

#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/WireEncoder.h"
#include "protocol/ContactWire.h"
#include "protocol/DonationWire.h"

namespace quenlet {
namespace {

// A piece ends with the donation that takes it past this size.
constexpr std::size_t pieceSizeInBytes = std::size_t{256} << 10;
// The pieces of a list up to this size stay in memory; others only while a client holds them.
constexpr std::size_t shortListInBytes = std::size_t{1} << 20;

}  // namespace

std::string EncodedCard::Kept::get(const std::function<std::string()>& encode) {
  constexpr std::size_t mostKeptBytes = std::size_t{1} << 20;
  {
    MutexLock lock(mutex);
    if (!reply.empty()) return reply;
  }
  std::string made = encode();
  MutexLock lock(mutex);
  if (made.size() <= mostKeptBytes) reply = made;
  return made;
}

std::string EncodedCard::fetchReply(const ContactPtr& card) {
  return card->attachment().get<EncodedCard>()->fetch.get([&card] {
    WireEncoder encoder;
    ContactWire::encode(encoder, *card);
    ErrorWire::encode(encoder, nullptr);
    return std::move(encoder).take();
  });
}

std::string EncodedCard::synchronousReply(const ContactPtr& card) {
  return card->attachment().get<EncodedCard>()->synchronous.get([&card] {
    WireEncoder encoder;
    ContactWire::encodeEither(encoder, Result<ContactPtr>::success(card));
    return std::move(encoder).take();
  });
}

EncodedDonations::EncodedDonations(std::shared_ptr<const DonationValues> donations)
    : values(std::move(donations)) {
  // Encodes everything once, a piece at a time: the header of the reply needs the size, and pieces
  // must end at the same places each time.
  std::size_t end = 0;
  do {
    std::string bytes = encode(end);
    size += bytes.size();
    ends.push_back(end);
    if (size <= shortListInBytes) {
      kept.push_back(std::make_shared<const std::string>(std::move(bytes)));
    } else {
      kept.clear();
    }
  } while (end < values->size());
  MutexLock lock(mutex);
  shared.resize(ends.size());
}

std::string EncodedDonations::encode(std::size_t& begin) const {
  WireEncoder encoder;
  if (begin == 0) encoder.list(values->size());
  while (begin < values->size() && encoder.bytes().size() < pieceSizeInBytes) {
    DonationWire::encodeValue(encoder, *(*values)[begin++]);
  }
  // The reply has two values: the list and, null here, the error.
  if (begin == values->size()) ErrorWire::encode(encoder, nullptr);
  return std::move(encoder).take();
}

std::shared_ptr<const std::string> EncodedDonations::piece(std::size_t index) const {
  if (!kept.empty()) return kept.at(index);
  {
    MutexLock lock(mutex);
    if (auto held = shared.at(index).lock()) return held;
  }
  // Encoded without the lock: two readers may do it at once, and the first to finish is shared.
  std::size_t begin = index == 0 ? 0 : ends[index - 1];
  auto made = std::make_shared<const std::string>(encode(begin));
  MutexLock lock(mutex);
  if (auto held = shared[index].lock()) return held;
  shared[index] = made;
  return made;
}

EncodedReplyPtr DonationListReplies::replyFor(
    const std::shared_ptr<const DonationValues>& donations) {
  // Under the lock, although it encodes the list once: a second caller then shares the result.
  MutexLock lock(mutex);
  auto reply = latest.lock();
  if (!reply || reply->donations() != donations) {
    reply = std::make_shared<const EncodedDonations>(donations);
    latest = reply;
  }
  return reply;
}

}  // namespace quenlet
