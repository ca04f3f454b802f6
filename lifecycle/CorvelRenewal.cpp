// Renewal: before a value expires, its donor is asked until when it holds. Nothing is kept between
// two runs; a donor's answer is an ordinary change of the store, whenever it comes.

#include <map>

#include "core/Corvel.h"
#include "model/DonationError.h"
#include "platform/PlatformServices.h"
#include "platform/logging/StandardOutput.h"

namespace quenlet {
namespace {

constexpr double renewalDelaySeconds = 2.0;

// A value that no donor has donated, to see whether a donor answers at all.
DonationValuePtr placeholderValue() {
  return DonationValue::donationValueWithEmailAddress(
      "placeholder@example.invalid", "", DonationOrigin{"?", "placeholder", std::nullopt, {}, {}});
}

void printRenewal(std::optional<Date> newExpirationDate, const ErrorPtr& error) {
  if (newExpirationDate) printLine("Donation renewed until " + newExpirationDate->iso8601());
  if (error) printLine("Error renewing: " + error->description());
}

}  // namespace

void Corvel::renewWithDonations(const DonationValues& values) {
  DonationValues external;
  for (const DonationValuePtr& value : values) {
    if (!internalBundleIdentifiers.contains(std::string(value->bundleKey().text))) {
      external.push_back(value);
    }
  }
  if (external.empty()) return;
  static_cast<void>(
      PlatformServices::current().defaultSchedulerProvider()->backgroundScheduler()->afterDelay(
          renewalDelaySeconds, [self = shared_from_this(), external = std::move(external)] {
            self->askDonorsToRenew(external);
          }));
}

void Corvel::askDonorsToRenew(const DonationValues& values) {
  std::map<std::string, DonationValues> groups;
  for (const DonationValuePtr& value : values) {
    // Grouped by canonical form; a donor is looked up by its identifier as donated.
    groups[std::string(value->bundleKey().text)].push_back(value);
  }
  const auto loader = PlatformServices::current().makeDonorLoader(weak_from_this());
  for (const auto& [key, group] : groups) {
    const std::string& bundleIdentifier = group.front()->origin().bundleIdentifier;
    logger->willRenewValues(group, bundleIdentifier);
    // The capture keeps the loader until it has answered.
    loader->donorWithIdentifier(bundleIdentifier)
        .onCompletion([self = shared_from_this(), loader,
                       donated = group](const Result<DonorObjectPtr>& donor) {
          self->askDonorToRenew(donated, donor);
        });
  }
}

void Corvel::askDonorToRenew(const DonationValues& values, const Result<DonorObjectPtr>& donor) {
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

void Corvel::renewalAcknowledged(const DonationValuePtr& value,
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
  const SaveReply nobodyWaits = [](const SaveResponse&) {};
  // An ordinary change: it may bring back a value that was deleted while the donor was asked.
  if (newExpirationDate->timeIntervalSince(PlatformServices::current().now()) <= 0) {
    submitChange(RemoveValuesWithIdentifiers{{value->origin().donationIdentifier}}, nobodyWaits);
  } else {
    submitChange(InsertOrModifyValues{{value->copyWithNewExpirationDate(*newExpirationDate)}},
                 nobodyWaits);
  }
}

void Corvel::discoverExtensionWithIdentifier(const std::string& bundleIdentifier) {
  const auto loader = PlatformServices::current().makeDonorLoader(weak_from_this());
  loader->donorWithIdentifier(bundleIdentifier)
      .onCompletion([loader](const Result<DonorObjectPtr>& donor) {
        if (!donor.ok()) {
          printLine("Could not discover extension: " + donor.error()->description());
        } else if (const auto extension =
                       std::dynamic_pointer_cast<DonorExtension>(donor.value())) {
          extension->renewExpirationDateForDonatedValue(placeholderValue(), printRenewal);
        }
      });
}

}  // namespace quenlet
