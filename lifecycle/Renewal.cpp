#include "lifecycle/Renewal.h"

#include <map>
#include <set>

#include "model/DonationError.h"
#include "platform/PlatformServices.h"
#include "platform/foundation/StandardStreams.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

constexpr double renewalDelaySeconds = 2.0;

// The agent's own sources: their values are never sent for renewal.
bool isInternal(const DonationValue& value) {
  static const std::set<Fingerprint> internalBundleIdentifiers = {
      DonationKeys::ofText(AccountsBundleIdentifier),
      DonationKeys::ofText(SIMCardBundleIdentifier)};
  return internalBundleIdentifiers.contains(value.bundleKey());
}

// A value that no donor has donated, to see whether a donor answers at all.
DonationValuePtr placeholderValue() {
  return DonationValue::donationValueWithEmailAddress(
      "placeholder@example.invalid", "", DonationOrigin{"?", "placeholder", std::nullopt, {}, {}});
}

void printRenewal(std::optional<Date> newExpirationDate, const ErrorPtr& error) {
  if (newExpirationDate) {
    StandardStreams::writeOutput("Donation renewed until " + newExpirationDate->iso8601());
  }
  if (error) StandardStreams::writeOutput("Error renewing: " + error->description());
}

}  // namespace

void Renewal::renewWithDonations(const DonationValues& values,
                                 std::weak_ptr<CorvelProtocol> agent) {
  DonationValues external =
      valuesWhere(values, [](const DonationValue& value) { return !isInternal(value); });
  if (external.empty()) return;
  static_cast<void>(
      PlatformServices::current().defaultSchedulerProvider()->backgroundScheduler()->afterDelay(
          renewalDelaySeconds,
          [self = shared_from_this(), external = std::move(external), agent = std::move(agent)] {
            self->askDonorsToRenew(external, agent);
          }));
}

void Renewal::renewPreExpired(const DonationValues& values, std::weak_ptr<CorvelProtocol> agent) {
  const Date now = PlatformServices::current().now();
  const DonationValues expired = valuesWhere(
      values, [now](const DonationValue& value) { return value.expirationDate() < now; });
  if (expired.empty()) return;
  logger->preExpiredDonations(expired);
  renewWithDonations(expired, std::move(agent));
}

void Renewal::askDonorsToRenew(const DonationValues& values, std::weak_ptr<CorvelProtocol> agent) {
  std::map<std::string, DonationValues> groups;
  for (const DonationValuePtr& value : values) {
    // Grouped by canonical form; a donor is looked up by its identifier as donated.
    groups[canonicalKey(value->decoded().origin.bundleIdentifier)].push_back(value);
  }
  const auto loader = PlatformServices::current().makeDonorLoader(std::move(agent));
  for (const auto& [key, group] : groups) {
    const std::string bundleIdentifier = group.front()->decoded().origin.bundleIdentifier;
    logger->willRenewValues(group, bundleIdentifier);
    // The capture keeps the loader until it has answered.
    loader->donorWithIdentifier(bundleIdentifier)
        .onCompletion([self = shared_from_this(), loader,
                       donated = group](const Result<DonorObjectPtr>& donor) {
          self->askDonorToRenew(donated, donor);
        });
  }
}

void Renewal::askDonorToRenew(const DonationValues& values, const Result<DonorObjectPtr>& donor) {
  if (!donor.ok()) {
    logger->couldNotRenewBecauseLoadingError(donor.error());
    return;
  }
  const auto extension = std::dynamic_pointer_cast<DonorExtension>(donor.value());
  if (!extension) {
    logger->couldNotRenewBecauseNotADonorExtension(donor.value()->description());
    return;
  }
  for (const DonationValuePtr& value : values) {
    extension->renewExpirationDateForDonatedValue(
        value, [self = shared_from_this(), value](std::optional<Date> newExpirationDate,
                                                  const ErrorPtr& donorError) {
          self->renewalAcknowledged(value, newExpirationDate, donorError);
        });
  }
}

void Renewal::renewalAcknowledged(const DonationValuePtr& value,
                                  std::optional<Date> newExpirationDate,
                                  const ErrorPtr& donorError) {
  if (!newExpirationDate) {
    logger->couldNotRenewBecauseDonorError(
        donorError ? donorError
                   : makeDonationError(DonationErrorCode::donorGaveNoAnswer,
                                       "the donor gave neither a date nor an error"));
    return;
  }
  logger->didRenewValue(value, *newExpirationDate);
  // An ordinary change: it may bring back a value that was deleted while the donor was asked.
  if (newExpirationDate->timeIntervalSince(PlatformServices::current().now()) <= 0) {
    store->submitChange(RemoveValuesWithIdentifiers{{value->decoded().origin.donationIdentifier}},
                        nobodyWaits);
  } else {
    store->submitChange(
        InsertOrModifyValues{{value->copyWithNewExpirationDate(*newExpirationDate)}}, nobodyWaits);
  }
}

void Renewal::discoverExtensionWithIdentifier(const std::string& bundleIdentifier,
                                              std::weak_ptr<CorvelProtocol> agent) {
  const auto loader = PlatformServices::current().makeDonorLoader(std::move(agent));
  loader->donorWithIdentifier(bundleIdentifier)
      .onCompletion([loader](const Result<DonorObjectPtr>& donor) {
        if (!donor.ok()) {
          StandardStreams::writeOutput("Could not discover extension: " +
                                       donor.error()->description());
        } else if (const auto extension =
                       std::dynamic_pointer_cast<DonorExtension>(donor.value())) {
          extension->renewExpirationDateForDonatedValue(placeholderValue(), printRenewal);
        }
      });
}

}  // namespace quenlet
