#pragma once

#include <cstdint>
#include <string>

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

}  // namespace quenlet
