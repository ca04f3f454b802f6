#pragma once

#include <string>

#include "platform/contacts/VCard.h"

namespace quenlet {

// What a card tells, in one line that a table row can hold: "Dr.|Ann|B.|Lee|PhD|Annie" for the name
// (prefix, given, middle, family, suffix, nickname) when there is one, then "
// E(home:ann@example.com)", " T(...)", " A(...)" for each entry, " P(bytes)" and " skipped 1".
inline std::string described(const VCard& card) {
  const Contact& contact = card.contact;
  std::string text = contact.namePrefix() + "|" + contact.givenName() + "|" + contact.middleName() +
                     "|" + contact.familyName() + "|" + contact.nameSuffix() + "|" +
                     contact.nickname();
  if (text == "|||||") text.clear();
  for (const auto& entry : contact.emailAddresses()) {
    text += " E(" + entry->label + ":" + entry->value + ")";
  }
  for (const auto& entry : contact.phoneNumbers()) {
    text += " T(" + entry->label + ":" + entry->value.stringValue() + ")";
  }
  for (const auto& entry : contact.postalAddresses()) {
    const PostalAddress& value = entry->value;
    text += " A(" + entry->label + ":" + value.street + "|" + value.subLocality + "|" + value.city +
            "|" + value.subAdministrativeArea + "|" + value.state + "|" + value.postalCode + "|" +
            value.country + "|" + value.isoCountryCode + ")";
  }
  if (contact.imageData()) text += " P(" + *contact.imageData() + ")";
  if (card.skippedEntries > 0) text += " skipped " + std::to_string(card.skippedEntries);
  return text;
}

}  // namespace quenlet
