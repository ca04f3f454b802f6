#include "platform/contacts/Contact.h"

#include <algorithm>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

template <typename T>
bool sameContent(const std::shared_ptr<const T>& a, const std::shared_ptr<const T>& b) {
  if (!a || !b) return a == b;
  return a == b || *a == *b;
}

template <typename T>
bool sameEntries(const LabeledValues<T>& a, const LabeledValues<T>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), sameContent<LabeledValue<T>>);
}

bool sameName(const ContactFields& a, const ContactFields& b) {
  return canonicallyEqual(a.namePrefix, b.namePrefix) &&
         canonicallyEqual(a.givenName, b.givenName) &&
         canonicallyEqual(a.middleName, b.middleName) &&
         canonicallyEqual(a.familyName, b.familyName) &&
         canonicallyEqual(a.nameSuffix, b.nameSuffix) && canonicallyEqual(a.nickname, b.nickname);
}

}  // namespace

bool operator==(const ContactFields& a, const ContactFields& b) {
  return sameName(a, b) && sameEntries(a.emailAddresses, b.emailAddresses) &&
         sameEntries(a.phoneNumbers, b.phoneNumbers) &&
         sameEntries(a.postalAddresses, b.postalAddresses) && sameContent(a.imageData, b.imageData);
}

}  // namespace quenlet
