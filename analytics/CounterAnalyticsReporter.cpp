#include "analytics/CounterAnalyticsReporter.h"

#include "analytics/DescriptionBuilder.h"
#include "platform/PlatformServices.h"
#include "platform/counters/CounterKeys.h"

namespace quenlet {

void CounterAnalyticsReporter::reportNumberOfMeCards(std::uint64_t count) {
  PlatformServices::current().counterStore()->setScalar(CounterKeys::meCardCount,
                                                        static_cast<std::int64_t>(count));
}

void CounterAnalyticsReporter::reportHasNameComponents(bool hasNameComponents, bool hasEmailAddress,
                                                       bool hasPhoneNumber, bool hasPostalAddress) {
  const auto store = PlatformServices::current().counterStore();
  store->setScalar(CounterKeys::hasName, hasNameComponents ? 1 : 0);
  store->setScalar(CounterKeys::hasEmailAddress, hasEmailAddress ? 1 : 0);
  store->setScalar(CounterKeys::hasPhoneNumber, hasPhoneNumber ? 1 : 0);
  store->setScalar(CounterKeys::hasPostalAddress, hasPostalAddress ? 1 : 0);
}

void CounterAnalyticsReporter::reportAugmentationStatus(const AugmentationStatus& status) {
  reportNumberOfMatchedEmailAddresses(
      status.matchedEmailAddressCount(), status.unmatchedEmailAddressCount(),
      status.matchedPhoneNumberCount(), status.unmatchedPhoneNumberCount(),
      status.matchedPostalAddressCount(), status.unmatchedPostalAddressCount());
}

void CounterAnalyticsReporter::reportNumberOfMatchedEmailAddresses(
    std::uint64_t matchedEmailAddresses, std::uint64_t numberOfUnmatchedEmailAddresses,
    std::uint64_t numberOfMatchedPhoneNumbers, std::uint64_t numberOfUnmatchedPhoneNumbers,
    std::uint64_t numberOfMatchedPostalAddresses, std::uint64_t numberOfUnmatchedPostalAddresses) {
  const auto store = PlatformServices::current().counterStore();
  const auto add = [&store](const char* key, std::uint64_t count) {
    store->addSample(key, static_cast<double>(count));
  };
  add(CounterKeys::matchedEmailAddresses, matchedEmailAddresses);
  add(CounterKeys::unmatchedEmailAddresses, numberOfUnmatchedEmailAddresses);
  add(CounterKeys::matchedPhoneNumbers, numberOfMatchedPhoneNumbers);
  add(CounterKeys::unmatchedPhoneNumbers, numberOfUnmatchedPhoneNumbers);
  add(CounterKeys::matchedPostalAddresses, numberOfMatchedPostalAddresses);
  add(CounterKeys::unmatchedPostalAddresses, numberOfUnmatchedPostalAddresses);
}

std::string CounterAnalyticsReporter::description() const {
  return DescriptionBuilder("CounterAnalyticsReporter").build();
}

}  // namespace quenlet
