#include "sources/sim/SIMCardMonitor.h"

#include <utility>

#include "model/DonationRecord.h"
#include "platform/PlatformServices.h"
#include "platform/contacts/ContactStore.h"
#include "platform/foundation/StandardStreams.h"
#include "platform/foundation/Text.h"
#include "sources/OwnDonations.h"

namespace quenlet {
namespace {

constexpr char nothing[] = "nothing";

// For lines about SIM cards: control characters and line breaks of a card or an error become
// blanks. "[identifier value, identifier value]", "[]" for an empty list.
std::string shown(const std::optional<SIMCardItems>& items) {
  if (!items) return nothing;
  std::string text;
  for (const SIMCardItem& item : *items) {
    if (!text.empty()) text += ", ";
    text += onOneLine(item.identifier) + " " + onOneLine(item.value);
  }
  return "[" + text + "]";
}

std::string shown(const ErrorPtr& error) {
  return error ? onOneLine(error->description()) : nothing;
}

}  // namespace

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
          StandardStreams::writeOutput("Could not remove previous SIM donations: " + shown(error));
        });
    return;
  }
  for (const SIMCardItem& item : items) donateWithSimCardItem(item, agent);
}

void SIMCardMonitor::donateWithSimCardItem(const SIMCardItem& item, CorvelProtocol& agent) {
  const std::optional<PhoneNumber> number = PhoneNumber::withStringValue(item.value);
  if (!number) {
    StandardStreams::writeOutput("Could not convert phone number " + onOneLine(item.value));
    return;
  }
  DonationOrigin origin{SIMCardBundleIdentifier, item.identifier, PlatformServices::current().now(),
                        Date::distantFuture()};
  DonationValues values = OwnDonations::storable({DonationValue::donationValueWithPhoneNumber(
      *number, LabelPhoneNumberDevice, std::move(origin))});
  if (values.empty()) return;
  agent.donateMeCardValues(std::move(values), [](const ErrorPtr& error) {
    if (!error) return;
    StandardStreams::writeOutput("Error donating device phone number: " + shown(error));
  });
}

void SIMCardDonationSolicitor::runWithReason(std::uint64_t /*reason*/) {
  if (!SIMCardMonitor::shouldMonitor()) return;
  PlatformServices::current().makePhoneNumberMonitor()->infoWithCompletion(
      [](const std::optional<SIMCardItems>& items, const ErrorPtr& error) {
        StandardStreams::writeOutput("SIM info: " + shown(items));
        StandardStreams::writeOutput("Error: " + shown(error));
      });
}

}  // namespace quenlet
