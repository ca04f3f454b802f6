#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/contacts/Contact.h"
#include "platform/foundation/Mutex.h"

namespace quenlet {

// The replies that carry the card, encoded for the first client that asks and kept for the next: a
// card changes seldom and is fetched often. Thread-safe.
class EncodedCard final {
 public:
  // The values of the reply to fetchDonatedMeCard(), and to synchronousDonatedMeCard().
  [[nodiscard]] std::string fetchReply(const ContactPtr& card);
  [[nodiscard]] std::string synchronousReply(const ContactPtr& card);

 private:
  // The reply for the latest card. A reply of more than 1 MiB is not kept.
  class Kept final {
   public:
    // Encodes without the lock: several threads may encode the same card at the same time.
    [[nodiscard]] std::string get(const ContactPtr& card,
                                  const std::function<std::string()>& encode) EXCLUDES(mutex);

   private:
    Mutex mutex;
    // Weakly, since a card shares its donations.
    std::weak_ptr<const Contact> encodedCard GUARDED_BY(mutex);
    std::string reply GUARDED_BY(mutex);
  };

  Kept fetch;
  Kept synchronous;
};

}  // namespace quenlet
