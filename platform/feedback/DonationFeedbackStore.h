#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "model/DonationValue.h"
#include "quenlet/Error.h"

namespace quenlet {

// Remembers which donated values a contact's owner confirmed or rejected. Thread-safe.
class DonationFeedbackStore {
 public:
  virtual ~DonationFeedbackStore() = default;
  // Whether the owner confirmed or rejected the value for that contact. Compares content, not
  // identifiers. False while that is unknown; the change handler is called once it is known.
  [[nodiscard]] virtual bool donatedValueHasBeenConfirmedOrRejected(
      const DonationValue& value, const std::string& contactIdentifier) = 0;
  // Records the values as rejected. Durable when the handler is called without an error. The
  // handler is called once, on any thread.
  virtual void rejectDonatedValues(const DonationValues& values,
                                   const std::string& contactIdentifier,
                                   std::function<void(ErrorPtr)> completionHandler) = 0;
  // `handler` is called when an earlier "no" may have become wrong: the feedback can be read at
  // last, or another program has added to it. It runs on any thread, perhaps within a look-up, so
  // it should only submit work. Replaces the former handler.
  virtual void setChangeHandler(std::function<void()> handler) = 0;
};

}  // namespace quenlet
