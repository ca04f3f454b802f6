#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/Cancelable.h"
#include "quenlet/Error.h"

namespace quenlet {

inline constexpr char DeviceClassNumberKey[] = "DeviceClassNumber";
// The class of phones.
inline constexpr std::int64_t handsetClass = 1;

// Facts about the device by key. Thread-safe.
class DeviceInfo {
 public:
  virtual ~DeviceInfo() = default;
  // The device's integer for `key`; `defaultAnswer` when it has none.
  [[nodiscard]] virtual std::int64_t integerAnswer(const std::string& key,
                                                   std::int64_t defaultAnswer) = 0;
};

// A phone number on one of the device's SIM cards. A value type.
struct SIMCardItem final {
  // Stays the same for the same number on the same card.
  std::string identifier;
  // The text stored on the card, which need not be a valid number.
  std::string value;
  friend bool operator==(const SIMCardItem&, const SIMCardItem&) = default;
};

using SIMCardItems = std::vector<SIMCardItem>;

// Monitors the phone numbers on the device's SIM cards. Thread-safe.
class PhoneNumberMonitor {
 public:
  using InfoChangeHandler = std::function<void(const SIMCardItems& items)>;
  // The items or nothing, the error or null.
  using InfoCompletion = std::function<void(std::optional<SIMCardItems> items, ErrorPtr error)>;

  virtual ~PhoneNumberMonitor() = default;
  // Calls `handler` with the current numbers, and again after every change, until the token is
  // cancelled. The first call comes even without numbers: some may have gone while nobody
  // watched. Where numbers have gone, or may have, while others are there, a call without numbers
  // comes right before that with the others: a receiver need not compare. On the platform's main
  // thread, never within this call.
  [[nodiscard]] virtual std::shared_ptr<Cancelable> addInfoChangeHandler(
      InfoChangeHandler handler) = 0;
  // `infoWithCompletion:`. Calls `completion` once with the current numbers, perhaps at once.
  virtual void infoWithCompletion(InfoCompletion completion) = 0;
};

}  // namespace quenlet
