#include "core/ContactReplies.h"

#include "platform/donations/ContactWire.h"
#include "platform/ipc/ErrorWire.h"

namespace quenlet {
namespace {

std::string encodeFetched(const ContactPtr& contact) {
  WireEncoder encoder;
  ContactWire::encode(encoder, *contact);
  ErrorWire::encode(encoder, nullptr);
  return std::move(encoder).take();
}

std::string encodeSynchronous(const ContactPtr& contact) {
  WireEncoder encoder;
  ContactWire::encodeEither(encoder, Result<ContactPtr>::left(contact));
  return std::move(encoder).take();
}

}  // namespace

std::string ContactReplies::fetched(const ContactPtr& contact) {
  MutexLock lock(mutex);
  return encoded(ofFetch, contact, &encodeFetched);
}

std::string ContactReplies::synchronous(const ContactPtr& contact) {
  MutexLock lock(mutex);
  return encoded(ofSynchronousFetch, contact, &encodeSynchronous);
}

std::string ContactReplies::encoded(Kept& kept, const ContactPtr& contact, Encode encode) {
  // By the owner, not by the address, which a later card can have again.
  const bool isSame = !kept.contact.owner_before(contact) && !contact.owner_before(kept.contact);
  if (!isSame || kept.bytes.empty()) kept = {contact, encode(contact)};
  return kept.bytes;
}

}  // namespace quenlet
