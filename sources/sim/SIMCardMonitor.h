#pragma once

#include <memory>

#include "platform/donations/CorvelProtocol.h"
#include "platform/foundation/Cancelable.h"
#include "platform/telephony/PhoneNumberMonitor.h"

namespace quenlet {

// Donates the phone numbers of the device's SIM cards, and takes them back when none is left.
// Failures are printed on standard output and not tried again. Call start() and stop() on one
// thread at a time; the numbers come on the platform monitor's.
class SIMCardMonitor final {
 public:
  SIMCardMonitor(std::shared_ptr<CorvelProtocol> agent,
                 std::shared_ptr<PhoneNumberMonitor> phoneNumberMonitor);
  ~SIMCardMonitor() { stop(); }
  SIMCardMonitor(const SIMCardMonitor&) = delete;
  SIMCardMonitor& operator=(const SIMCardMonitor&) = delete;

  // Whether the device is one with SIM cards.
  [[nodiscard]] static bool shouldMonitor();

  // Follows the cards until stop(); starting again starts anew.
  void start();
  // What was donated stays.
  void stop();

  // Donates one number under the item's identifier, for ever. What is no phone number is printed
  // and left out; so is, on standard error, what cannot be stored.
  static void donateWithSimCardItem(const SIMCardItem& item, CorvelProtocol& agent);

 private:
  static void handleSIMItems(const SIMCardItems& items, CorvelProtocol& agent);

  const std::shared_ptr<PhoneNumberMonitor> phoneNumberMonitor;
  std::shared_ptr<Cancelable> token;
  const std::shared_ptr<CorvelProtocol> agent;
};

}  // namespace quenlet
