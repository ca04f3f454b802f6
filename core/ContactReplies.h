#pragma once

#include <memory>
#include <string>

#include "platform/donations/CorvelProtocol.h"
#include "platform/foundation/Mutex.h"

namespace quenlet {

// Encodes the replies that carry the donated card. The card changes seldom and is fetched often, so
// the encoded form is kept until another card is asked for. Thread-safe.
class ContactReplies final {
 public:
  // The reply values of fetchDonatedMeCard: and of synchronousDonatedMeCard: for a card.
  [[nodiscard]] std::string fetched(const ContactPtr& contact) EXCLUDES(mutex);
  [[nodiscard]] std::string synchronous(const ContactPtr& contact) EXCLUDES(mutex);

 private:
  using Encode = std::string (*)(const ContactPtr& contact);
  // The encoded form of one card; the card itself is not kept alive.
  struct Kept final {
    std::weak_ptr<const Contact> contact;
    std::string bytes;
  };
  [[nodiscard]] std::string encoded(Kept& kept, const ContactPtr& contact, Encode encode)
      REQUIRES(mutex);

  Mutex mutex;
  Kept ofFetch GUARDED_BY(mutex);
  Kept ofSynchronousFetch GUARDED_BY(mutex);
};

}  // namespace quenlet
