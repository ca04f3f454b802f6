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
  // identifiers.
  [[nodiscard]] virtual bool donatedValueHasBeenConfirmedOrRejected(
      const DonationValue& value, const std::string& contactIdentifier) = 0;
  // Records the values as rejected; durable before the handler is called with no error. The handler
  // is called once, on any thread.
  virtual void rejectDonatedValues(const DonationValues& values,
                                   const std::string& contactIdentifier,
                                   std::function<void(ErrorPtr)> completionHandler) = 0;
};

}  // namespace quenlet
