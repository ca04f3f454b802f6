#include "analytics/AugmentationClassifier.h"

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

}  // namespace quenlet
