#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "model/DonationValue.h"
#include "platform/foundation/Error.h"

namespace quenlet {

// Remembers what a contact's owner said of donated values. Thread-safe.
class DonationFeedbackStore {
 public:
  virtual ~DonationFeedbackStore() = default;
  // Whether the owner confirmed or rejected the value for that contact. Compares content, not
  // identifiers. False while that cannot be known: the change handler hears when it can.
  [[nodiscard]] virtual bool donatedValueHasBeenConfirmedOrRejected(
      const DonationValue& value, const std::string& contactIdentifier) = 0;
  // Records the values as rejected; durable before the handler is called with no error. The handler
  // is called once, on any thread.
  virtual void rejectDonatedValues(const DonationValues& values,
                                   const std::string& contactIdentifier,
                                   std::function<void(ErrorPtr)> completionHandler) = 0;
  // `handler` is called when a value may be confirmed or rejected that a look-up denied before: the
  // feedback can be read at last, or another program has added to it. Any thread; it may come from
  // within a look-up, so it only submits work. Takes the place of the former handler.
  virtual void setChangeHandler(std::function<void()> handler) = 0;
};

}  // namespace quenlet
