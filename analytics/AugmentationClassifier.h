#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "analytics/AugmentationBucket.h"
#include "platform/contacts/Contact.h"

namespace quenlet {

class AugmentationClassifier;

// How much the donated card adds to the owner's own, in numbers: for each kind, how many donated
// values the own card also has (matched), and how many it lacks (unmatched). A value type.
class AugmentationStatus final {
 public:
  AugmentationStatus(std::uint64_t matchedEmailAddressCount,
                     std::uint64_t unmatchedEmailAddressCount,
                     std::uint64_t matchedPhoneNumberCount, std::uint64_t unmatchedPhoneNumberCount,
                     std::uint64_t matchedPostalAddressCount,
                     std::uint64_t unmatchedPostalAddressCount);
  // Counts what the classifier has sorted.
  explicit AugmentationStatus(const AugmentationClassifier& classifier);

  [[nodiscard]] std::uint64_t matchedEmailAddressCount() const { return emailAddresses.matched; }
  [[nodiscard]] std::uint64_t unmatchedEmailAddressCount() const {
    return emailAddresses.unmatched;
  }
  [[nodiscard]] std::uint64_t matchedPhoneNumberCount() const { return phoneNumbers.matched; }
  [[nodiscard]] std::uint64_t unmatchedPhoneNumberCount() const { return phoneNumbers.unmatched; }
  [[nodiscard]] std::uint64_t matchedPostalAddressCount() const { return postalAddresses.matched; }
  [[nodiscard]] std::uint64_t unmatchedPostalAddressCount() const {
    return postalAddresses.unmatched;
  }

  [[nodiscard]] std::string description() const;

  friend bool operator==(const AugmentationStatus&, const AugmentationStatus&) = default;

 private:
  struct Counts final {
    std::uint64_t matched;
    std::uint64_t unmatched;

    [[nodiscard]] std::string description() const;
    friend bool operator==(const Counts&, const Counts&) = default;
  };

  Counts emailAddresses;
  Counts phoneNumbers;
  Counts postalAddresses;
};

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
