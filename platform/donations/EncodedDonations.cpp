#include "platform/donations/EncodedDonations.h"

#include <utility>

#include "platform/donations/DonationWire.h"
#include "platform/ipc/ErrorWire.h"

namespace quenlet {

namespace {

// A piece is a little longer than this, or as long as its last donation.
constexpr std::size_t pieceSizeInBytes = std::size_t{256} << 10;
constexpr std::size_t shortListInBytes = std::size_t{1} << 20;

}  // namespace

EncodedDonations::EncodedDonations(std::shared_ptr<const DonationValues> donations)
    : values(std::move(donations)) {
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
  // After the list stands the error that there was not.
  if (begin == values->size()) ErrorWire::encode(encoder, nullptr);
  return std::move(encoder).take();
}

std::shared_ptr<const std::string> EncodedDonations::piece(std::size_t index) const {
  if (!kept.empty()) return kept.at(index);
  {
    MutexLock lock(mutex);
    if (auto held = shared.at(index).lock()) return held;
  }
  std::size_t begin = index == 0 ? 0 : ends[index - 1];
  auto made = std::make_shared<const std::string>(encode(begin));
  MutexLock lock(mutex);
  if (auto held = shared[index].lock()) return held;
  shared[index] = made;
  return made;
}

EncodedReplyPtr DonationListReplies::replyFor(
    const std::shared_ptr<const DonationValues>& donations) {
  // Under the lock, so that of two who ask at once one has nothing to do.
  MutexLock lock(mutex);
  auto reply = latest.lock();
  if (!reply || reply->donations() != donations) {
    reply = std::make_shared<const EncodedDonations>(donations);
    latest = reply;
  }
  return reply;
}

}  // namespace quenlet
