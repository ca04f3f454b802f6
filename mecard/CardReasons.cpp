#include "mecard/CardReasons.h"

#include <utility>

#include "mecard/ContactRebuilder.h"

namespace quenlet {

CardReasons CardReasons::of(std::shared_ptr<const DonationValues> donations,
                            std::optional<PersonNameComponents> curatedName,
                            std::vector<std::string> curatedEmailAddresses) {
  CardReasons reasons;
  ContactRebuilder rebuilder(std::move(donations), std::move(curatedName),
                             std::move(curatedEmailAddresses));
  static_cast<void>(rebuilder.buildNewContact(&reasons));
  return reasons;
}

void CardReasons::note(const DonationValue& donation, CardReason reason) {
  reasons.insert_or_assign(&donation, std::move(reason));
}

const CardReason& CardReasons::reasonOf(const DonationValue& donation) const {
  static const CardReason shown;
  const auto found = reasons.find(&donation);
  return found == reasons.end() ? shown : found->second;
}

}  // namespace quenlet
