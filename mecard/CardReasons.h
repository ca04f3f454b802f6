#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "model/DonationValue.h"

namespace quenlet {

// What becomes of a donation when the donated card is made.
enum class CardDecision : std::uint8_t {
  shown,
  // The name that its app, or its cluster, gives the owner contradicts the curated name.
  appSilenced,
  clusterSilenced,
  // A name, while the owner curates none and the donated names differ.
  namesDisagree,
  // A name that agrees with the curated one, which stands.
  ownName,
  // One of the owner's curated e-mail addresses, or the same mailbox under an alias.
  ownEmailAddress,
  // An entry that an earlier donation has given.
  givenBefore,
  // An image, or a name all of whose components later names have given.
  givenAgain,
  // A name without components.
  hasNothing,
};

// A decision and what it rests on. A value type.
struct CardReason final {
  CardDecision decision = CardDecision::shown;
  // The name that silences the donor, the first name that disagrees, or the donation that the card
  // shows instead. Null for the other decisions.
  const DonationValue* other = nullptr;
  // For ownEmailAddress: the curated address.
  std::string ownAddress = {};
};

// Why donations are, or are not, on the donated card, as told by the classes that make the card
// while they make it. An agent's rebuild passes none of these and notes nothing. One thread.
class CardReasons final {
 public:
  // Makes the card of these donations and keeps the reasons for those that it leaves out.
  [[nodiscard]] static CardReasons of(std::shared_ptr<const DonationValues> donations,
                                      std::optional<PersonNameComponents> curatedName,
                                      std::vector<std::string> curatedEmailAddresses);

  // The donations outlive the reasons. A donation is shown until it is noted.
  void note(const DonationValue& donation, CardReason reason);
  [[nodiscard]] const CardReason& reasonOf(const DonationValue& donation) const;

 private:
  std::unordered_map<const DonationValue*, CardReason> reasons;
};

}  // namespace quenlet
