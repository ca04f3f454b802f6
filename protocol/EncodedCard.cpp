#include "protocol/EncodedCard.h"

#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/WireEncoder.h"
#include "protocol/ContactWire.h"

namespace quenlet {

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

}  // namespace quenlet
