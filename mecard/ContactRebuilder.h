#pragma once

#include <optional>
#include <string>
#include <vector>

#include "model/DonationValue.h"
#include "platform/contacts/Contact.h"

namespace quenlet {

// Makes the donated me card: leaves out what contradicts or repeats the curated card, and builds a
// contact from the rest. Serves one rebuild; one thread at a time. The order of the donations is
// kept; time and memory are linear in their number.
class ContactRebuilder final {
 public:
  ContactRebuilder(DonationValues donations, std::optional<PersonNameComponents> curatedName,
                   std::vector<std::string> curatedEmailAddresses);

  [[nodiscard]] Contact buildNewContact();

  // All donations at first; after buildNewContact() those that went into the contact.
  [[nodiscard]] const DonationValues& filteredDonations() const { return remaining; }

 private:
  void dropNames();
  void dropCuratedEmailAddresses();

  DonationValues remaining;
  std::optional<PersonNameComponents> name;
  std::vector<std::string> emailAddresses;
};

}  // namespace quenlet
