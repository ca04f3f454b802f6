#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "model/DonationValue.h"
#include "platform/foundation/Future.h"
#include "quenlet/Date.h"
#include "quenlet/Error.h"

namespace quenlet {

// An object installed under a bundle identifier: a DonorExtension, or a registration that cannot be
// asked for donations. Thread-safe.
class DonorObject {
 public:
  virtual ~DonorObject() = default;
  // For a log or a terminal: its kind and bundle identifier.
  [[nodiscard]] virtual std::string description() const = 0;
};

using DonorObjectPtr = std::shared_ptr<DonorObject>;

// A donor that can be asked. Thread-safe; no call waits for the donor.
class DonorExtension : public DonorObject {
 public:
  // The new expiration date or nothing, and the donor's error or null. Called once, on any thread.
  using AcknowledgementHandler =
      std::function<void(std::optional<Date> newExpirationDate, ErrorPtr error)>;

  // Asks until when the value is valid; a date in the past withdraws it. An error when the donor
  // cannot be started, breaks down, or is late.
  virtual void renewExpirationDateForDonatedValue(
      DonationValuePtr value, AcknowledgementHandler acknowledgementHandler) = 0;
  // Asks the donor to donate all its values.
  virtual void redonateAllValuesWithReason(std::uint64_t reason) = 0;
};

// Loads installed donors. Thread-safe.
class DonorLoader {
 public:
  virtual ~DonorLoader() = default;
  // `donorWithIdentifier:`. Fails when nothing usable is installed for that bundle identifier, or
  // the donor cannot be started. Completes on any thread, perhaps before it returns.
  [[nodiscard]] virtual Future<DonorObjectPtr> donorWithIdentifier(
      const std::string& bundleIdentifier) = 0;
};

}  // namespace quenlet
