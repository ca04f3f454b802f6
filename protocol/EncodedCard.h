#pragma once

#include <functional>
#include <string>

#include "platform/contacts/Contact.h"
#include "platform/foundation/Attachment.h"
#include "platform/foundation/Mutex.h"

namespace quenlet {

// The replies that carry a card, encoded for the first client that asks and kept with the card, as
// long as that lives: it changes seldom and is fetched often. Thread-safe.
class EncodedCard final : public Attachment::Attached {
 public:
  // The values of the reply to fetchDonatedMeCard(), and to synchronousDonatedMeCard().
  [[nodiscard]] static std::string fetchReply(const ContactPtr& card);
  [[nodiscard]] static std::string synchronousReply(const ContactPtr& card);

 private:
  // A reply of more than 1 MiB is not kept, but encoded again each time.
  class Kept final {
   public:
    // Encodes without the lock: several threads may encode at the same time.
    [[nodiscard]] std::string get(const std::function<std::string()>& encode) EXCLUDES(mutex);

   private:
    Mutex mutex;
    std::string reply GUARDED_BY(mutex);
  };

  Kept fetch;
  Kept synchronous;
};

}  // namespace quenlet
