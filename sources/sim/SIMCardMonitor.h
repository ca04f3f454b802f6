#pragma once

#include <memory>
#include <utility>

#include "platform/foundation/Cancelable.h"
#include "platform/telephony/Telephony.h"
#include "protocol/CorvelProtocol.h"
#include "sources/DonationSolicitor.h"

namespace quenlet {

// Donates the phone numbers of the device's SIM cards, and takes them back when none is left.
// Prints failures on standard output and does not try again. Call start() and stop() on one thread
// at a time; the numbers come on the platform monitor's thread.
class SIMCardMonitor final {
 public:
  SIMCardMonitor(std::shared_ptr<CorvelProtocol> agent,
                 std::shared_ptr<PhoneNumberMonitor> phoneNumberMonitor);
  ~SIMCardMonitor() { stop(); }
  SIMCardMonitor(const SIMCardMonitor&) = delete;
  SIMCardMonitor& operator=(const SIMCardMonitor&) = delete;

  // Whether the device is a phone (class 1).
  [[nodiscard]] static bool shouldMonitor();

  // Follows the cards until stop(); starting again starts anew.
  void start();
  // Donated numbers stay.
  void stop();

  // Donates one number under the item's identifier, without an end. Text that is not a phone number
  // is left out, with a line on standard output; so is a value that cannot be stored, with one on
  // standard error.
  static void donateWithSimCardItem(const SIMCardItem& item, CorvelProtocol& agent);

 private:
  static void handleSIMItems(const SIMCardItems& items, CorvelProtocol& agent);

  const std::shared_ptr<PhoneNumberMonitor> phoneNumberMonitor;
  std::shared_ptr<Cancelable> token;
  const std::shared_ptr<CorvelProtocol> agent;
};

// Prints what the SIM cards hold, on a device that has them; donates nothing. Thread-safe.
class SIMCardDonationSolicitor final : public DonationSolicitor {
 public:
  explicit SIMCardDonationSolicitor(std::shared_ptr<CorvelProtocol> simAgent)
      : donationAgent(std::move(simAgent)) {}

  [[nodiscard]] const std::shared_ptr<CorvelProtocol>& agent() const { return donationAgent; }
  void runWithReason(std::uint64_t reason) override;

 private:
  const std::shared_ptr<CorvelProtocol> donationAgent;
};

}  // namespace quenlet
