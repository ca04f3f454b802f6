#pragma once

#include <memory>
#include <string>

#include "platform/contacts/LabeledValues.h"
#include "platform/contacts/PhoneNumber.h"
#include "platform/contacts/PostalAddress.h"
#include "platform/foundation/Attachment.h"

namespace quenlet {

// The fields of one contact record. Text fields that are not set are empty.
struct ContactFields final {
  std::string namePrefix;
  std::string givenName;
  std::string middleName;
  std::string familyName;
  std::string nameSuffix;
  std::string nickname;
  LabeledValues<std::string> emailAddresses;
  LabeledValues<PhoneNumber> phoneNumbers;
  LabeledValues<PostalAddress> postalAddresses;
  // Shared, since an image can be large. May be null.
  std::shared_ptr<const std::string> imageData;

  // Compares entries by content.
  friend bool operator==(const ContactFields& a, const ContactFields& b);
};

// A contact record. Immutable.
class Contact {
 public:
  Contact() = default;
  explicit Contact(ContactFields contactFields) : fields(std::move(contactFields)) {}

  [[nodiscard]] const std::string& namePrefix() const { return fields.namePrefix; }
  [[nodiscard]] const std::string& givenName() const { return fields.givenName; }
  [[nodiscard]] const std::string& middleName() const { return fields.middleName; }
  [[nodiscard]] const std::string& familyName() const { return fields.familyName; }
  [[nodiscard]] const std::string& nameSuffix() const { return fields.nameSuffix; }
  [[nodiscard]] const std::string& nickname() const { return fields.nickname; }
  [[nodiscard]] const LabeledValues<std::string>& emailAddresses() const {
    return fields.emailAddresses;
  }
  [[nodiscard]] const LabeledValues<PhoneNumber>& phoneNumbers() const {
    return fields.phoneNumbers;
  }
  [[nodiscard]] const LabeledValues<PostalAddress>& postalAddresses() const {
    return fields.postalAddresses;
  }
  [[nodiscard]] const std::shared_ptr<const std::string>& imageData() const {
    return fields.imageData;
  }

  friend bool operator==(const Contact&, const Contact&) = default;

  // What a reader keeps with the contact.
  [[nodiscard]] const Attachment& attachment() const { return attached; }

 protected:
  ContactFields fields;

 private:
  Attachment attached;
};

using ContactPtr = std::shared_ptr<const Contact>;

// A contact under construction, by one thread at a time: `std::move(mutableContact).contact()` is
// the finished one.
class MutableContact final : public Contact {
 public:
  using Contact::Contact;

  [[nodiscard]] ContactFields& mutableFields() { return fields; }
  [[nodiscard]] Contact contact() && { return Contact(std::move(fields)); }
};

}  // namespace quenlet
