#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "mecard/CollectedSuppressionResult.h"
#include "mecard/EmailAddressCollector.h"
#include "model/DonationValue.h"
#include "platform/contacts/Contact.h"

namespace quenlet {

// Makes the donated me card: leaves out what contradicts or repeats the curated card, and builds a
// contact from the rest, which shares the list of donations. Serves one rebuild; one thread at a
// time. The order of the donations is kept; time and memory are linear in their number.
class ContactRebuilder final {
 public:
  ContactRebuilder(std::shared_ptr<const DonationValues> donations,
                   std::optional<PersonNameComponents> curatedName,
                   std::vector<std::string> curatedEmailAddresses);

  // Notes in `reasons`, unless it is null, why donations are left out.
  [[nodiscard]] Contact buildNewContact(CardReasons* reasons = nullptr);

  // All donations at first; after buildNewContact() those that went into the contact.
  [[nodiscard]] DonationValues filteredDonations() const;

 private:
  [[nodiscard]] CollectedSuppressionResult collectSuppression() const;
  // Whether it contradicts or repeats the curated card.
  [[nodiscard]] static bool isLeftOut(const DonationValue& donation,
                                      const CollectedSuppressionResult& suppression,
                                      EmailAddressCollector& collector, CardReasons* reasons);

  const std::shared_ptr<const DonationValues> all;
  std::vector<std::uint32_t> remaining;  // places in the list
  std::optional<PersonNameComponents> name;
  std::vector<std::string> emailAddresses;
};

}  // namespace quenlet
