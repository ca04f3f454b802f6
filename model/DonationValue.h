#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

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
// held by a shared pointer. The texts that comparisons need (lower-cased, canonical) are made once,
// with the record.
class DonationValue final : public std::enable_shared_from_this<DonationValue> {
 public:
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

  // The record that propertyListRepresentation() describes; null when `entries` is no valid record.
  // Unknown keys are ignored, dates may be reals (seconds since 1970), integers or dates.
  [[nodiscard]] static DonationValuePtr initWithPropertyListRepresentation(
      const PropertyListDictionary& entries);
  [[nodiscard]] PropertyListDictionary propertyListRepresentation() const;

  [[nodiscard]] const DonationOrigin& origin() const { return *originRecord; }
  // The same content and origin, but for the expiration date.
  [[nodiscard]] DonationValuePtr copyWithNewExpirationDate(Date expirationDate) const;
  // Calls the one operation of `visitor` that fits the kind.
  void acceptDonationValueVisitor(DonationValueVisitor& visitor) const;
  // The content as the closed enumeration of kinds.
  [[nodiscard]] Value value() const;

  // The content as an entry of a contact's list, with its origin as store info; shares the record.
  // Null for another kind.
  [[nodiscard]] std::shared_ptr<const LabeledValue<std::string>> emailEntry() const;
  [[nodiscard]] std::shared_ptr<const LabeledValue<PhoneNumber>> phoneEntry() const;
  [[nodiscard]] std::shared_ptr<const LabeledValue<PostalAddress>> postalEntry() const;

  // The canonical text by which the donated card finds duplicates of an e-mail, phone or postal
  // entry; nothing for names, images and addresses without text.
  [[nodiscard]] const std::optional<std::string>& duplicateKey() const { return entryKey; }

  // By content and origin. Unlike Value, image records with the same bytes are equal.
  friend bool operator==(const DonationValue& a, const DonationValue& b);

 private:
  struct Postal final {
    LabeledValue<PostalAddress> entry;
    PostalAddressStyle style;
    friend bool operator==(const Postal&, const Postal&) = default;
  };
  using Content = std::variant<PersonNameComponents, LabeledValue<std::string>,
                               LabeledValue<PhoneNumber>, Postal,
                               std::shared_ptr<const std::string>>;
  struct Construction;

 public:
  // For the factory operations above, which alone can name the first argument's type.
  DonationValue(const Construction&, Content kindAndContent,
                std::shared_ptr<const DonationOrigin> origin);

 private:
  std::shared_ptr<const DonationOrigin> originRecord;
  Content content;
  std::optional<std::string> entryKey;
};

// DonationValue is compared through its pointer where lists are compared.
[[nodiscard]] bool equalValues(const DonationValues& a, const DonationValues& b);

}  // namespace quenlet
