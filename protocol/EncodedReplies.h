#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "model/DonationValue.h"
#include "platform/contacts/Contact.h"
#include "platform/foundation/Attachment.h"
#include "platform/foundation/Mutex.h"
#include "platform/ipc/WireReply.h"

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

// The reply that lists all donations. Clients that read it at the same time share its pieces: a
// piece is encoded when the first client gets there, and kept while a client holds it. The pieces
// of a short list are kept with the reply. Thread-safe.
class EncodedDonations final : public EncodedReply {
 public:
  // Encodes the list once, to find its size.
  explicit EncodedDonations(std::shared_ptr<const DonationValues> donations);

  [[nodiscard]] const std::shared_ptr<const DonationValues>& donations() const { return values; }
  [[nodiscard]] std::size_t sizeInBytes() const override { return size; }
  [[nodiscard]] std::size_t pieceCount() const override { return ends.size(); }
  [[nodiscard]] std::shared_ptr<const std::string> piece(std::size_t index) const override
      EXCLUDES(mutex);

 private:
  // Encodes values from `begin` on until the piece is long enough, and moves `begin` past them.
  [[nodiscard]] std::string encode(std::size_t& begin) const;

  const std::shared_ptr<const DonationValues> values;
  std::size_t size = 0;
  // For each piece, the number of values up to its end.
  std::vector<std::size_t> ends;
  // The pieces of a short list; empty for others.
  std::vector<std::shared_ptr<const std::string>> kept;
  mutable Mutex mutex;
  mutable std::vector<std::weak_ptr<const std::string>> shared GUARDED_BY(mutex);
};

// Gives requests for the same list the same reply, while one of them still holds it. Thread-safe.
class DonationListReplies final {
 public:
  [[nodiscard]] EncodedReplyPtr replyFor(const std::shared_ptr<const DonationValues>& donations)
      EXCLUDES(mutex);

 private:
  Mutex mutex;
  std::weak_ptr<const EncodedDonations> latest GUARDED_BY(mutex);
};

}  // namespace quenlet
