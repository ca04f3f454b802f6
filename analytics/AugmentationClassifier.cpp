#include "analytics/AugmentationClassifier.h"

#include "analytics/DescriptionBuilder.h"

namespace quenlet {
namespace {

template <typename T>
void fill(AugmentationBucket<T>& bucket, const LabeledValues<T>& curated,
          const LabeledValues<T>& donated) {
  for (const auto& entry : curated) bucket.addCurated(entry->value);
  for (const auto& entry : donated) bucket.addDonated(entry->value);
}

}  // namespace

AugmentationStatus AugmentationClassifier::analyze() {
  fill(emailAddressBucket, curated->emailAddresses(), donated->emailAddresses());
  fill(phoneNumberBucket, curated->phoneNumbers(), donated->phoneNumbers());
  fill(postalAddressBucket, curated->postalAddresses(), donated->postalAddresses());
  return AugmentationStatus(*this);
}

AugmentationStatus::AugmentationStatus(std::uint64_t matchedEmailAddressCount,
                                       std::uint64_t unmatchedEmailAddressCount,
                                       std::uint64_t matchedPhoneNumberCount,
                                       std::uint64_t unmatchedPhoneNumberCount,
                                       std::uint64_t matchedPostalAddressCount,
                                       std::uint64_t unmatchedPostalAddressCount)
    : emailAddresses{matchedEmailAddressCount, unmatchedEmailAddressCount},
      phoneNumbers{matchedPhoneNumberCount, unmatchedPhoneNumberCount},
      postalAddresses{matchedPostalAddressCount, unmatchedPostalAddressCount} {}

AugmentationStatus::AugmentationStatus(const AugmentationClassifier& classifier)
    : emailAddresses{classifier.emailAddresses().common().size(),
                     classifier.emailAddresses().uniqueToDonated().size()},
      phoneNumbers{classifier.phoneNumbers().common().size(),
                   classifier.phoneNumbers().uniqueToDonated().size()},
      postalAddresses{classifier.postalAddresses().common().size(),
                      classifier.postalAddresses().uniqueToDonated().size()} {}

std::string AugmentationStatus::description() const {
  return DescriptionBuilder("AugmentationStatus")
      .append("email addresses", emailAddresses.description())
      .append("phone numbers", phoneNumbers.description())
      .append("postal addresses", postalAddresses.description())
      .build();
}

std::string AugmentationStatus::Counts::description() const {
  return "(" + std::to_string(matched) + " matched, " + std::to_string(unmatched) + " unmatched)";
}

}  // namespace quenlet
