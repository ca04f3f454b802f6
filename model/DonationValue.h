#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "model/ComparisonKeys.h"
#include "model/DonationOrigin.h"
#include "model/DonationValueVisitor.h"
#include "model/Value.h"
#include "platform/contacts/LabeledValue.h"
#include "platform/foundation/PropertyList.h"
#include "platform/foundation/PropertyListWriter.h"

namespace quenlet {

class DonationValue;
using DonationValuePtr = std::shared_ptr<const DonationValue>;
// A list of donated values, in order; the values are shared, never copied.
using DonationValues = std::vector<DonationValuePtr>;

// One piece of information about the device's owner and where it comes from. Immutable, always
// held by a shared pointer. The texts that comparisons need (lower-cased, canonical) are made once,
// with the record.
class DonationValue final : public std::enable_shared_from_this<DonationValue> {
 public:
  struct Postal final {
    LabeledValue<PostalAddress> entry;
    PostalAddressStyle style;
    friend bool operator==(const Postal&, const Postal&) = default;
  };
  struct Image final {
    std::shared_ptr<const std::string> bytes;
    friend bool operator==(const Image& a, const Image& b) { return *a.bytes == *b.bytes; }
  };
  using Content = std::variant<PersonNameComponents, LabeledValue<std::string>,
                               LabeledValue<PhoneNumber>, Postal, Image>;

  [[nodiscard]] static DonationValuePtr donationValueWithNameComponents(PersonNameComponents name,
                                                                        DonationOrigin origin);
  [[nodiscard]] static DonationValuePtr donationValueWithEmailAddress(std::string emailAddress,
                                                                      std::string label,
                                                                      DonationOrigin origin);
  [[nodiscard]] static DonationValuePtr donationValueWithPhoneNumber(PhoneNumber phoneNumber,
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
  [[nodiscard]] PropertyListDictionary propertyListRepresentation() const;
  // The text of that dictionary, made at the first call and kept, since every save writes it again;
  // an error for a record with text that the form cannot hold. Thread-safe.
  [[nodiscard]] const Result<PropertyListFragment>& propertyListText() const;

  [[nodiscard]] const DonationOrigin& origin() const { return *originRecord; }
  // The same content and origin, but for the expiration date.
  [[nodiscard]] DonationValuePtr copyWithNewExpirationDate(Date expirationDate) const;
  // Calls the one operation of `visitor` that fits the kind.
  void acceptDonationValueVisitor(DonationValueVisitor& visitor) const;
  // The content as the closed enumeration of kinds.
  [[nodiscard]] Value value() const;

  [[nodiscard]] bool isName() const {
    return std::holds_alternative<PersonNameComponents>(content);
  }
  // The content as an entry of a contact's list, with its origin as store info; shares the record.
  // Null for another kind.
  [[nodiscard]] std::shared_ptr<const LabeledValue<std::string>> emailEntry() const;
  [[nodiscard]] std::shared_ptr<const LabeledValue<PhoneNumber>> phoneEntry() const;
  [[nodiscard]] std::shared_ptr<const LabeledValue<PostalAddress>> postalEntry() const;

  [[nodiscard]] const ComparisonKeys& keys() const { return comparisonKeys; }

  // By content and origin. Unlike Value, images with the same bytes are equal.
  friend bool operator==(const DonationValue& a, const DonationValue& b);

  // Use the factory operations; public only for std::make_shared. `content` has the origin as the
  // store info of its entry.
  DonationValue(Content kindAndContent, std::shared_ptr<const DonationOrigin> origin);

 private:
  std::shared_ptr<const DonationOrigin> originRecord;
  Content content;
  ComparisonKeys comparisonKeys;
  mutable std::once_flag textIsMade;
  mutable std::optional<Result<PropertyListFragment>> text;
};

}  // namespace quenlet
