#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/ComparisonKeys.h"
#include "model/DonationDigest.h"
#include "model/DonationFields.h"
#include "model/DonationOrigin.h"
#include "model/DonationValueVisitor.h"
#include "model/Value.h"
#include "platform/contacts/LabeledValue.h"
#include "platform/foundation/PropertyList.h"

namespace quenlet {

class DonationValue;
using DonationValuePtr = std::shared_ptr<const DonationValue>;
// A list of donated values, in order; the values are shared, never copied.
using DonationValues = std::vector<DonationValuePtr>;

// One piece of information about the device's owner and where it comes from. Immutable, always
// held by a shared pointer.
//
// The agent holds many records and looks at few, so that a record is little more than its
// property-list text, which every save writes again: content and origin are read out of it when
// somebody asks. What comparisons need (lower-cased, canonical) is found once, with the record; it
// is a part of the text wherever the text has it in that form already. Records that were made
// together share one block of memory, in which their texts stand one behind the other.
class DonationValue final {
 public:
  using Value = quenlet::Value;

  [[nodiscard]] static DonationValuePtr donationValueWithNameComponents(PersonNameComponents name,
                                                                        DonationOrigin origin);
  [[nodiscard]] static DonationValuePtr donationValueWithEmailAddress(std::string emailAddress,
                                                                      std::string label,
                                                                      DonationOrigin origin);
  [[nodiscard]] static DonationValuePtr donationValueWithPhoneNumber(const PhoneNumber& phoneNumber,
                                                                     std::string label,
                                                                     DonationOrigin origin);
  [[nodiscard]] static DonationValuePtr donationValueWithPostalAddress(PostalAddress postalAddress,
                                                                       PostalAddressStyle style,
                                                                       std::string label,
                                                                       DonationOrigin origin);
  [[nodiscard]] static DonationValuePtr donationValueWithImageData(std::string imageData,
                                                                   DonationOrigin origin);

  // The record that propertyListRepresentation() describes; null when `entries` is no valid record:
  // not exactly one kind of content, an origin without its identifiers or dates, a phone number
  // that is none. Unknown keys are ignored. Dates may be reals or integers (seconds since 1970) or
  // dates.
  [[nodiscard]] static DonationValuePtr initWithPropertyListRepresentation(
      const PropertyListDictionary& entries);
  // Takes records off the front of `texts`, property-list texts one behind the other, and appends
  // them to `values`: at least one, and as many as are good to keep in one block. False, with
  // nothing changed, when the text is not in the form of propertyListText() or no valid record.
  [[nodiscard]] static bool takeFromPropertyListTexts(std::string_view& texts,
                                                      DonationValues& values);
  [[nodiscard]] PropertyListDictionary propertyListRepresentation() const;
  // The text of that dictionary, good for the record's life; nothing for a record with text or a
  // date that the form cannot hold, or without a bundle or donation identifier.
  [[nodiscard]] std::optional<std::string_view> propertyListText() const {
    if (digest.textSize == 0) return std::nullopt;
    return text({0, digest.textSize});
  }

  [[nodiscard]] DonationKind kind() const { return digest.kind; }
  // Read out of the text at each call.
  [[nodiscard]] DonationOrigin origin() const { return decoded().origin; }
  [[nodiscard]] Date expirationDate() const { return digest.expirationDate; }
  // The same content and origin, but for the expiration date.
  [[nodiscard]] DonationValuePtr copyWithNewExpirationDate(Date expirationDate) const;
  // Calls the one operation of `visitor` that fits the kind.
  void acceptDonationValueVisitor(DonationValueVisitor& visitor) const;
  // The content as the closed enumeration of kinds.
  [[nodiscard]] Value value() const;
  // The content as an entry of a contact's list, with its origin as store info; made at each call.
  // Null for another kind.
  [[nodiscard]] std::shared_ptr<const LabeledValue<std::string>> emailEntry() const;
  [[nodiscard]] std::shared_ptr<const LabeledValue<PhoneNumber>> phoneEntry() const;
  [[nodiscard]] std::shared_ptr<const LabeledValue<PostalAddress>> postalEntry() const;
  // The content of a name, read out of the text at each call, and of an image. Nothing and null for
  // another kind.
  [[nodiscard]] std::optional<PersonNameComponents> nameComponents() const;
  [[nodiscard]] std::shared_ptr<const std::string> imageData() const;

  // Identifiers in the form in which they are compared. Keys are good for the record's life.
  [[nodiscard]] ComparisonKey donationKey() const {
    return {text(digest.donation), digest.donationHash};
  }
  [[nodiscard]] ComparisonKey bundleKey() const { return {text(digest.bundle), digest.bundleHash}; }
  // Empty for a donation without a cluster.
  [[nodiscard]] ComparisonKey clusterKey() const {
    return {text(digest.cluster), digest.clusterHash};
  }
  // By which the donated card finds duplicates of an entry; nothing for names, images and addresses
  // without text.
  [[nodiscard]] std::optional<ComparisonKey> entryKey() const {
    if (!digest.hasEntry || isName()) return std::nullopt;
    return ComparisonKey{text(digest.entry), digest.entryHash};
  }
  [[nodiscard]] bool isName() const { return kind() == DonationKind::name; }
  // Only for names.
  [[nodiscard]] NameKey nameKey() const { return {std::string(text(digest.entry))}; }
  [[nodiscard]] bool hasNameKey(const NameKey& key) const { return text(digest.entry) == key.text; }

  // By content and origin. Unlike Value, images with the same bytes are equal.
  friend bool operator==(const DonationValue& a, const DonationValue& b);

  // Use the factory operations; public only for std::make_shared. `bytes` points to the text,
  // behind which stand the keys that are no part of it; `kept` is there for what the text does not
  // say, or says at too high a price.
  DonationValue(const DonationDigest& textDigest, std::shared_ptr<const char> textBytes,
                std::unique_ptr<const DecodedDonation> keptDonation)
      : digest(textDigest), bytes(std::move(textBytes)), kept(std::move(keptDonation)) {}

 private:
  [[nodiscard]] static DonationValuePtr makeRecord(DecodedDonation donation);
  [[nodiscard]] static PropertyListDictionary propertyListRepresentationOf(
      const DecodedDonation& donation);
  [[nodiscard]] DecodedDonation decoded() const;
  [[nodiscard]] std::string_view text(const TextSlice& slice) const {
    return {bytes.get() + slice.offset, slice.length};
  }

  DonationDigest digest;
  std::shared_ptr<const char> bytes;
  std::unique_ptr<const DecodedDonation> kept;
};

// For loops over many records, which lie scattered in memory: has one further on fetched while the
// one at `place` is looked at.
inline void prefetchDonation(const DonationValues& values, std::size_t place) {
  constexpr std::size_t ahead = 12;
  if (place + ahead < values.size()) __builtin_prefetch(values[place + ahead].get());
}

// The same for the texts of records.
inline void prefetchDonationText(const DonationValues& values, std::size_t place) {
  constexpr std::size_t ahead = 4;
  constexpr std::size_t lineSizeInBytes = 64;
  prefetchDonation(values, place);
  if (place + ahead >= values.size()) return;
  const std::string_view text = values[place + ahead]->propertyListText().value_or("");
  for (std::size_t offset = 0; offset < text.size(); offset += lineSizeInBytes) {
    __builtin_prefetch(text.data() + offset);
  }
}

}  // namespace quenlet
