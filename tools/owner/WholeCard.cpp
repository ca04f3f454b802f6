#include "tools/owner/WholeCard.h"

#include <utility>

#include "platform/contacts/PersonNameComponents.h"

namespace quenlet {
namespace {

bool isAlike(const std::string& own, const std::string& donated) {
  return canonicallyEqual(own, donated);
}
bool isAlike(const PhoneNumber& own, const PhoneNumber& donated) {
  return own.isLikePhoneNumber(donated);
}
bool isAlike(const PostalAddress& own, const PostalAddress& donated) { return own == donated; }

template <typename T>
bool has(const LabeledValues<T>& own, const T& donated) {
  for (const auto& entry : own) {
    if (isAlike(entry->value, donated)) return true;
  }
  return false;
}

template <typename T>
LabeledValues<T> joined(const LabeledValues<T>& own, const LabeledValues<T>& donated) {
  LabeledValues<T> all;
  all.reserve(own.size() + donated.size());
  for (const auto& entry : own) all.append(entry);
  for (const auto& entry : donated) {
    if (!has(own, entry->value)) all.append(entry);
  }
  return all;
}

bool hasNameComponent(const Contact& contact) {
  return !(PersonNameComponents::componentsForContact(contact) == PersonNameComponents());
}

}  // namespace

WholeCard WholeCard::of(const ContactPtr& own, const Contact& donated) {
  const Contact nothing;
  const Contact& first = own ? *own : nothing;
  const bool isNameOwn = hasNameComponent(first);
  const bool isImageOwn = first.imageData() != nullptr;
  const Contact& named = isNameOwn ? first : donated;
  ContactFields fields;
  fields.namePrefix = named.namePrefix();
  fields.givenName = named.givenName();
  fields.middleName = named.middleName();
  fields.familyName = named.familyName();
  fields.nameSuffix = named.nameSuffix();
  fields.nickname = named.nickname();
  fields.emailAddresses = joined(first.emailAddresses(), donated.emailAddresses());
  fields.phoneNumbers = joined(first.phoneNumbers(), donated.phoneNumbers());
  fields.postalAddresses = joined(first.postalAddresses(), donated.postalAddresses());
  fields.imageData = isImageOwn ? first.imageData() : donated.imageData();
  return {Contact(std::move(fields)), isNameOwn, isImageOwn};
}

}  // namespace quenlet
