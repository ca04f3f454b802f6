#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/foundation/Cancelable.h"
#include "platform/foundation/Error.h"
#include "platform/telephony/SIMCardItem.h"

namespace quenlet {

using SIMCardItems = std::vector<SIMCardItem>;

// Tells of the phone numbers on the device's SIM cards. Thread-safe.
class PhoneNumberMonitor {
 public:
  using InfoChangeHandler = std::function<void(const SIMCardItems& items)>;
  // The items or nothing, the error or null.
  using InfoCompletion = std::function<void(std::optional<SIMCardItems> items, ErrorPtr error)>;

  virtual ~PhoneNumberMonitor() = default;
  // Calls `handler` with what the cards hold now, nothing included, so that numbers that went while
  // nobody looked are noticed, and after every change, until the token is cancelled. On the
  // platform's main thread, never within this call.
  [[nodiscard]] virtual std::shared_ptr<Cancelable> addInfoChangeHandler(
      InfoChangeHandler handler) = 0;
  // `infoWithCompletion:`. Calls `completion` once with what the cards hold now, perhaps within
  // this call.
  virtual void infoWithCompletion(InfoCompletion completion) = 0;
};

}  // namespace quenlet
