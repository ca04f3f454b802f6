#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/DonationKeys.h"
#include "model/DonationRecord.h"
#include "platform/contacts/PhoneNumber.h"

namespace quenlet {

class DonationValue;

// One operation for each kind of donated value; DonationValue::acceptDonationValueVisitor() calls
// exactly one of them. A visitor overrides those of the kinds that concern it.
class DonationValueVisitor {
 public:
  virtual ~DonationValueVisitor() = default;
  virtual void visitNameComponents(const DonationValue& /*donation*/) {}
  virtual void visitEmailAddress(const DonationValue& /*donation*/) {}
  virtual void visitPhoneNumber(const DonationValue& /*donation*/) {}
  virtual void visitPostalAddress(const DonationValue& /*donation*/) {}
  virtual void visitImageData(const DonationValue& /*donation*/) {}
};

using DonationValuePtr = std::shared_ptr<const DonationValue>;
// A list of donated values, in order; the values are shared, never copied.
using DonationValues = std::vector<DonationValuePtr>;

// The five kinds of content, in the order of Value's cases.
enum class DonationKind : std::uint8_t {
  name,
  emailAddress,
  phoneNumber,
  postalAddress,
  imageData,
};

// One piece of information about the device's owner and where it comes from. Immutable, always held
// by a shared pointer.
//
// The agent holds many records and looks at few. So a record is its property-list text, which every
// save writes again, and a digest: the facts that searches need, found once. decoded() parses the
// text; everything else costs nothing. Records that were loaded together share one block, so that a
// save copies neighbours in one go:
//
//   block of texts                                                            records
//   <dict>…bo@example.org…</dict><dict>…+49 30…</dict><dict>…<data>…</dict>
//   ╰─ text of record 1 ────────╯                                             1  digest
//                                ╰─ of record 2 ──────╯                       2  digest
//                                                      ╰─ of record 3 ─────╯  3  digest, kept bytes
//
// `kept` holds the decoded content of an image, which would cost a base64 decode at each look, and
// of a record that has no text.
class DonationValue final {
 public:
  using Value = quenlet::Value;

  [[nodiscard]] static DonationValuePtr donationValueWithNameComponents(PersonNameComponents name,
                                                                        DonationOrigin origin) {
    return makeRecord({std::move(name), std::move(origin)});
  }
  [[nodiscard]] static DonationValuePtr donationValueWithEmailAddress(std::string emailAddress,
                                                                      std::string label,
                                                                      DonationOrigin origin) {
    return makeRecord(
        {Value::EmailAddress{std::move(emailAddress), std::move(label)}, std::move(origin)});
  }
  [[nodiscard]] static DonationValuePtr donationValueWithPhoneNumber(const PhoneNumber& phoneNumber,
                                                                     std::string label,
                                                                     DonationOrigin origin) {
    return makeRecord(
        {Value::PhoneNumber{phoneNumber.stringValue(), std::move(label)}, std::move(origin)});
  }
  [[nodiscard]] static DonationValuePtr donationValueWithPostalAddress(PostalAddress address,
                                                                       PostalAddressStyle style,
                                                                       std::string label,
                                                                       DonationOrigin origin) {
    return makeRecord(
        {Value::PostalAddress{std::move(address), style, std::move(label)}, std::move(origin)});
  }
  [[nodiscard]] static DonationValuePtr donationValueWithImageData(std::string imageData,
                                                                   DonationOrigin origin) {
    return makeRecord({Value::ImageData{std::make_shared<const std::string>(std::move(imageData))},
                       std::move(origin)});
  }

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
  [[nodiscard]] PropertyListDictionary propertyListRepresentation() const {
    return decoded().dictionaryRepresentation();
  }
  // The text of that dictionary, valid for the record's life. Nothing for a record with text or a
  // date that the form cannot hold, or with an empty bundle or donation identifier.
  [[nodiscard]] std::optional<std::string_view> propertyListText() const {
    return textSize > 0 ? std::optional(std::string_view(text.get(), textSize)) : std::nullopt;
  }

  // Content and origin, parsed from the text.
  [[nodiscard]] DecodedDonation decoded() const;
  // The content alone, parsed from the text.
  [[nodiscard]] Value value() const { return Value(decoded().content); }
  // The same content and origin with another expiration date.
  [[nodiscard]] DonationValuePtr copyWithNewExpirationDate(Date expirationDate) const;
  // Calls the one operation of `visitor` that fits the kind.
  void acceptDonationValueVisitor(DonationValueVisitor& visitor) const;

  [[nodiscard]] DonationKind kind() const { return kindOfContent; }
  // The components that a name has: bit n for nameComponentsByKey[n]. 0 for the other kinds.
  [[nodiscard]] std::uint8_t nameParts() const { return partsOfName; }
  [[nodiscard]] Date expirationDate() const { return expiration; }
  [[nodiscard]] const Fingerprint& donationKey() const { return donation; }
  [[nodiscard]] const Fingerprint& bundleKey() const { return bundle; }
  // No key for a donation without a cluster.
  [[nodiscard]] const Fingerprint& clusterKey() const { return cluster; }
  // Names of the same person have equal keys, and so have addresses or numbers that are duplicates
  // on the donated card. Images and postal addresses without text have no key.
  [[nodiscard]] const Fingerprint& contentKey() const { return content; }

  // By content and origin. Unlike Value, images with the same bytes are equal.
  friend bool operator==(const DonationValue& a, const DonationValue& b);

  // For a record whose text, if it has one, starts there. Use the factory operations; public only
  // for std::make_shared.
  DonationValue(DecodedDonation&& value, std::shared_ptr<const char> startOfText,
                std::size_t sizeOfText);

 private:
  [[nodiscard]] static DonationValuePtr makeRecord(DecodedDonation value);

  // The digest.
  const DonationKind kindOfContent;
  const std::uint8_t partsOfName;
  const std::uint32_t textSize;  // 0 for a record that has no text
  const Date expiration;
  const Fingerprint donation;
  const Fingerprint bundle;
  const Fingerprint cluster;
  const Fingerprint content;

  const std::shared_ptr<const char> text;
  const std::unique_ptr<const DecodedDonation> kept;
};

// For loops over many records, which lie scattered in memory: fetches both halves of a later one
// while the one at `place` is looked at.
inline void prefetchDonation(const DonationValues& values, std::size_t place) {
  constexpr std::size_t ahead = 12;
  if (place + ahead >= values.size()) return;
  const DonationValue* later = values[place + ahead].get();
  __builtin_prefetch(later);
  __builtin_prefetch(&later->contentKey());
}

}  // namespace quenlet
