#pragma once

#include <memory>
#include <string>

#include "analytics/AugmentationBucket.h"
#include "analytics/AugmentationStatus.h"
#include "platform/contacts/Contact.h"

namespace quenlet {

// Compares the owner's card with the donated one, kind by kind: which values are on one of them
// alone, which on both. Labels do not count. One thread at a time.
class AugmentationClassifier final {
 public:
  template <typename T>
  using Bucket = AugmentationBucket<T>;

  AugmentationClassifier(std::shared_ptr<const Contact> curatedCard,
                         std::shared_ptr<const Contact> donatedCard)
      : curated(std::move(curatedCard)), donated(std::move(donatedCard)) {}

  // Sorts all values of both cards, the curated ones first.
  [[nodiscard]] AugmentationStatus analyze();

  [[nodiscard]] const Bucket<std::string>& emailAddresses() const { return emailAddressBucket; }
  [[nodiscard]] const Bucket<PhoneNumber>& phoneNumbers() const { return phoneNumberBucket; }
  [[nodiscard]] const Bucket<PostalAddress>& postalAddresses() const { return postalAddressBucket; }

 private:
  const std::shared_ptr<const Contact> curated;
  const std::shared_ptr<const Contact> donated;
  Bucket<std::string> emailAddressBucket;
  Bucket<PhoneNumber> phoneNumberBucket;
  Bucket<PostalAddress> postalAddressBucket;
};

}  // namespace quenlet
