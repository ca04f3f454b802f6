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

// One piece of information about the device's owner and where it comes from. Immutable, always held
// by a shared pointer.
//
// The agent holds many records and looks at few. So a record is its property-list text, which every
// save writes again, and a digest: the keys that comparisons need, found once. Content and origin
// are parsed from the text on demand. A key in canonical form is a slice of the text if it stands
// there as such; otherwise it stands behind all texts. Records that were made together share one
// block:
//
//   0: text of record 1            338: text of record 2           677: further keys
//   <dict>…Bo@Example.org…</dict>  <dict>…bo@work.example…</dict>  bo@example.org
//
//   record 1: bytes at 0,   textSize 338, entry {677, 14}: compared in lower case
//   record 2: bytes at 338, textSize 339, entry {38, 15}: a slice of its own text
//
// Slices are {offset, length}, counted from `bytes`, the start of the record's own text.
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

  // Reads what propertyListRepresentation() gives. Null when `entries` is not a valid record: not
  // exactly one content, a missing label or style, an origin without its identifiers or dates, a
  // text that is not a phone number. Unknown keys are ignored. Dates may be reals or integers
  // (seconds since 1970) or dates.
  [[nodiscard]] static DonationValuePtr initWithPropertyListRepresentation(
      const PropertyListDictionary& entries);
  // Takes records off the front of `texts`, property-list texts one after the other, and appends
  // them to `values`: at least one, and as many as are good to keep in one block. False, with
  // nothing changed, when the text deviates from the form of propertyListText() or a record is
  // invalid.
  [[nodiscard]] static bool takeFromPropertyListTexts(std::string_view& texts,
                                                      DonationValues& values);
  [[nodiscard]] PropertyListDictionary propertyListRepresentation() const;
  // The text of that dictionary, valid for the record's life. Nothing for a record with text or a
  // date that the form cannot hold, or with an empty bundle or donation identifier.
  [[nodiscard]] std::optional<std::string_view> propertyListText() const {
    if (digest.textSize == 0) return std::nullopt;
    return text({0, digest.textSize});
  }

  [[nodiscard]] DonationKind kind() const { return digest.kind; }
  // Parsed from the text at each call.
  [[nodiscard]] DonationOrigin origin() const { return decoded().origin; }
  [[nodiscard]] Date expirationDate() const { return digest.expirationDate; }
  // The same content and origin with another expiration date.
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
  // The content of a name, parsed at each call, and of an image. Nothing or null for another kind.
  [[nodiscard]] std::optional<PersonNameComponents> nameComponents() const;
  [[nodiscard]] std::shared_ptr<const std::string> imageData() const;

  // Identifiers in canonical form, valid for the record's life.
  [[nodiscard]] ComparisonKey donationKey() const {
    return {text(digest.donation), digest.donationHash};
  }
  [[nodiscard]] ComparisonKey bundleKey() const { return {text(digest.bundle), digest.bundleHash}; }
  // Empty for a donation without a cluster.
  [[nodiscard]] ComparisonKey clusterKey() const {
    return {text(digest.cluster), digest.clusterHash};
  }
  // Entries with equal keys are duplicates in the donated card. Nothing for names, images and
  // postal addresses without text.
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

  // Use the factory operations; public only for std::make_shared. `bytes` points to the record's
  // text and reaches up to the further keys of its block. `kept` holds the decoded content when
  // there is no text, and image bytes, which would cost a base64 decode.
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

// For loops over many records, which lie scattered in memory: fetches a later one while the one at
// `place` is looked at.
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
