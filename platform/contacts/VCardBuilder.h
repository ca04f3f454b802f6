#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/contacts/VCard.h"
#include "platform/contacts/VCardProperty.h"

namespace quenlet {

// Makes one card of its properties, in order, between BEGIN and END. Labels and country codes of
// groups may come after what they belong to, hence the lists are put together at the end.
// For one thread.
class VCardBuilder final {
 public:
  // Takes one property. The error, when it makes the whole card unusable.
  [[nodiscard]] ErrorPtr add(const VCardProperty& property);
  // The card, whose END stands on `lineNumber`; an error when its VERSION is missing.
  [[nodiscard]] Result<VCard> build(std::size_t lineNumber) &&;

 private:
  template <typename T>
  struct Entry final {
    std::string group;
    unsigned preference;
    LabeledValue<T> labeledValue;
  };
  template <typename T>
  using Entries = std::vector<Entry<T>>;

  using Handler = void (VCardBuilder::*)(const VCardProperty&);
  [[nodiscard]] static const std::map<std::string, Handler, std::less<>>& handlers();

  [[nodiscard]] ErrorPtr addVersion(const VCardProperty& property);
  void addPhoto(const VCardProperty& property);
  void addUID(const VCardProperty& property);
  void addFormattedName(const VCardProperty& property);
  void addName(const VCardProperty& property);
  void addNickname(const VCardProperty& property);
  void addOrganization(const VCardProperty& property);
  void addEmailAddress(const VCardProperty& property);
  void addPhoneNumber(const VCardProperty& property);
  void addPostalAddress(const VCardProperty& property);
  void addLabel(const VCardProperty& property);
  void addCountryCode(const VCardProperty& property);

  template <typename T>
  static void append(Entries<T>& entries, const VCardProperty& property, T value);
  template <typename T>
  LabeledValues<T> finished(Entries<T> entries) const;
  [[nodiscard]] bool formattedNameRepeatsAnother() const;
  void takeNameFromFormattedName();

  VCard card;
  ContactFields fields;
  bool hasVersion = false;
  bool hasName = false;
  std::string organization;
  Entries<std::string> emailAddresses;
  Entries<PhoneNumber> phoneNumbers;
  Entries<PostalAddress> postalAddresses;
  std::map<std::string, std::string, std::less<>> labelsByGroup;
  std::map<std::string, std::string, std::less<>> countryCodesByGroup;
};

}  // namespace quenlet
