#include "mecard/ContactRebuilder.h"

#include "mecard/CollectedSuppressionResult.h"
#include "mecard/ContactBuilder.h"
#include "mecard/EmailAddressCollector.h"

namespace quenlet {

ContactRebuilder::ContactRebuilder(DonationValues donations,
                                   std::optional<PersonNameComponents> curatedName,
                                   std::vector<std::string> curatedEmailAddresses)
    : remaining(std::move(donations)),
      name(std::move(curatedName)),
      emailAddresses(std::move(curatedEmailAddresses)) {}

void ContactRebuilder::dropNames() {
  CollectedSuppressionResult suppression(name);
  for (const DonationValuePtr& donation : remaining) suppression.collect(*donation);
  std::erase_if(remaining, [&suppression](const DonationValuePtr& donation) {
    return !suppression.keeps(*donation);
  });
}

void ContactRebuilder::dropCuratedEmailAddresses() {
  EmailAddressCollector collector(emailAddresses);
  for (const DonationValuePtr& donation : remaining) collector.visit(*donation);
  remaining = std::move(collector).takeDonations();
}

Contact ContactRebuilder::buildNewContact() {
  dropNames();
  dropCuratedEmailAddresses();
  ContactBuilder builder;
  for (const DonationValuePtr& donation : remaining) builder.addWithDonatedValue(donation);
  return builder.build();
}

}  // namespace quenlet
