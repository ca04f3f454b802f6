#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "model/DonationValue.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/Error.h"

namespace quenlet {

// What is installed under a donor's bundle identifier: a DonorExtension, or something else that
// registered itself but cannot be asked for donations. Thread-safe.
class DonorObject {
 public:
  virtual ~DonorObject() = default;
  // For a log or a terminal: what it is and its bundle identifier.
  [[nodiscard]] virtual std::string description() const = 0;
};

using DonorObjectPtr = std::shared_ptr<DonorObject>;

// A donor that can be asked. Thread-safe; nothing waits for the donor.
class DonorExtension : public DonorObject {
 public:
  // The new expiration date or nothing, and the donor's error or null. Called once, on any thread.
  using AcknowledgementHandler =
      std::function<void(std::optional<Date> newExpirationDate, ErrorPtr error)>;

  // Asks until when the value holds; a date that has passed withdraws it. A donor that cannot be
  // started, breaks, or is late is an error.
  virtual void renewExpirationDateForDonatedValue(
      DonationValuePtr value, AcknowledgementHandler acknowledgementHandler) = 0;
  // Asks for a donation of all that the donor has.
  virtual void redonateAllValuesWithReason(std::uint64_t reason) = 0;
};

}  // namespace quenlet
