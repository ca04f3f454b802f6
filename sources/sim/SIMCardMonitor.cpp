#include "sources/sim/SIMCardMonitor.h"

#include <utility>

#include "model/DonationRecord.h"
#include "platform/PlatformServices.h"
#include "platform/contacts/ContactStore.h"
#include "platform/foundation/Text.h"
#include "platform/logging/StandardOutput.h"
#include "sources/OwnDonations.h"
#include "sources/sim/SIMCardText.h"

namespace quenlet {

SIMCardMonitor::SIMCardMonitor(std::shared_ptr<CorvelProtocol> agent,
                               std::shared_ptr<PhoneNumberMonitor> phoneNumberMonitor)
    : phoneNumberMonitor(std::move(phoneNumberMonitor)), agent(std::move(agent)) {}

bool SIMCardMonitor::shouldMonitor() {
  return PlatformServices::current().deviceInfo()->integerAnswer(DeviceClassNumberKey, -1) == 1;
}

void SIMCardMonitor::start() {
  stop();
  token = phoneNumberMonitor->addInfoChangeHandler(
      [agent = agent](const SIMCardItems& items) { handleSIMItems(items, *agent); });
}

void SIMCardMonitor::stop() {
  if (const auto registration = std::exchange(token, nullptr)) registration->cancel();
}

void SIMCardMonitor::handleSIMItems(const SIMCardItems& items, CorvelProtocol& agent) {
  if (items.empty()) {
    agent.removeDonatedMeCardValuesWithBundleIdentifier(
        SIMCardBundleIdentifier, [](bool success, const ErrorPtr& error) {
          if (success) return;
          printLine("Could not remove previous SIM donations: " + SIMCardText::of(error));
        });
    return;
  }
  for (const SIMCardItem& item : items) donateWithSimCardItem(item, agent);
}

void SIMCardMonitor::donateWithSimCardItem(const SIMCardItem& item, CorvelProtocol& agent) {
  const std::optional<PhoneNumber> number = PhoneNumber::withStringValue(item.value);
  if (!number) {
    printLine("Could not convert phone number " + onOneLine(item.value));
    return;
  }
  DonationOrigin origin{SIMCardBundleIdentifier, item.identifier, PlatformServices::current().now(),
                        Date::distantFuture()};
  DonationValues values = OwnDonations::storable({DonationValue::donationValueWithPhoneNumber(
      *number, LabelPhoneNumberDevice, std::move(origin))});
  if (values.empty()) return;
  agent.donateMeCardValues(std::move(values), [](const ErrorPtr& error) {
    if (!error) return;
    printLine("Error donating device phone number: " + SIMCardText::of(error));
  });
}

}  // namespace quenlet
