#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/contacts/ContactStore.h"
#include "platform/contacts/VCard.h"
#include "platform/contacts/VCardEncoding.h"
#include "platform/contacts/VCardProperty.h"

namespace quenlet {

// Builds one card from its lines between BEGIN and END, in order. The label or country code of a
// group may come after the entry that it belongs to, so the lists are put together at the end. For
// one thread.
class VCardBuilder final {
 public:
  // For the card that begins on line `beginLine` and is number `place` in its text. `keys` outlives
  // the builder.
  VCardBuilder(const std::vector<KeyDescriptor>& keys, std::size_t beginLine, std::size_t place);

  // Takes one line. An unusable line is counted, or makes build() fail.
  void add(std::string_view line, std::size_t lineNumber);
  // According to the VERSION seen so far.
  [[nodiscard]] VCardSyntax syntax() const { return currentSyntax; }
  [[nodiscard]] std::size_t beginsOnLine() const { return firstLine; }
  // The card, or the error that makes all of it unusable.
  [[nodiscard]] Result<VCard> build() &&;

 private:
  template <typename T>
  struct Entry final {
    std::string group;
    unsigned preference;
    LabeledValue<T> labeledValue;
  };
  template <typename T>
  using Entries = std::vector<Entry<T>>;
  using TextsByGroup = std::map<std::string, std::string, std::less<>>;

  // Each takes a property whose value is not empty; false when the value is unusable.
  using Handler = bool (VCardBuilder::*)(const VCardProperty&);
  struct Reading final {
    Handler handler;
    std::optional<KeyDescriptor> onlyFor = {};  // nothing: always read
  };
  [[nodiscard]] static const std::map<std::string, Reading, std::less<>>& readings();

  [[nodiscard]] bool isAskedFor(const Reading& reading) const;
  [[nodiscard]] bool take(const Reading& reading, std::string_view line);
  void noteSkipped(std::string property);
  void setFailure(ContactErrorCode code, const char* offence);
  bool addVersion(const VCardProperty& property);
  bool addKind(const VCardProperty& property);
  bool addPhoto(const VCardProperty& property);
  bool addUID(const VCardProperty& property);
  bool addFormattedName(const VCardProperty& property);
  bool addName(const VCardProperty& property);
  bool addNickname(const VCardProperty& property);
  bool addEmailAddress(const VCardProperty& property);
  bool addPhoneNumber(const VCardProperty& property);
  bool addPostalAddress(const VCardProperty& property);
  bool addLabel(const VCardProperty& property);
  bool addCountryCode(const VCardProperty& property);

  template <typename T>
  static bool append(Entries<T>& entries, const VCardProperty& property, T value);
  template <typename T>
  LabeledValues<T> finished(Entries<T> entries) const;
  [[nodiscard]] bool formattedNameIsAName() const;
  void takeNameFromFormattedName();

  const std::vector<KeyDescriptor>& wantedKeys;
  const std::size_t firstLine;
  std::size_t currentLine = 0;
  VCardSyntax currentSyntax = VCardSyntax::current;
  ErrorPtr failure;
  VCard card;
  ContactFields fields;
  bool hasName = false;
  bool formattedNameIsDerived = false;
  Entries<std::string> emailAddresses;
  Entries<PhoneNumber> phoneNumbers;
  Entries<PostalAddress> postalAddresses;
  TextsByGroup labelsByGroup;
  TextsByGroup countryCodesByGroup;
};

}  // namespace quenlet
