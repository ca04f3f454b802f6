#pragma once

#include "protocol/CorvelProtocol.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {

// All that a client can ask for, by number, the one that waits last, with arguments that depend on
// another number. `replied` gets the error, or null.
inline constexpr std::size_t numberOfOperations = 10;
inline void ask(CorvelProtocol& agent, std::size_t operation, std::size_t number,
                const ErrorReply& replied) {
  const std::string name = "name" + std::to_string(number);
  const DonationOrigin origin = from(name, name, name);
  const auto account = std::make_shared<Account>(
      Account{.identifier = name, .username = name + "@example.org", .isActive = true});
  const SuccessReply success = [replied](bool, const auto& error) { replied(error); };
  const auto value = [replied](const auto&, const auto& error) { replied(error); };
  if (operation == 0) {
    agent.donateMeCardValues({email(name + "@example.org", origin), phone("+49 30 1234567"),
                              named({.givenName = name}, from("app", "n", name)),
                              postal({.street = name, .city = "Ulm"}), image(name)},
                             replied);
  }
  if (operation == 1) agent.removeDonatedMeCardValuesForIdentifiers({name, "tel"}, success);
  if (operation == 2) agent.removeDonatedMeCardValuesWithBundleIdentifier(name, success);
  if (operation == 3) agent.fetchDonatedMeCard(value);
  if (operation == 4) agent.meCardDonations(value);
  if (operation == 5)
    agent.changeFromAccount(number % 2 == 0 ? account : nullptr, account, replied);
  if (operation == 6) agent.rejectValueWithDonationIdentifier(name, replied);
  if (operation == 7) agent.rejectValuesWithClusterIdentifier(name, replied);
  if (operation == 8) agent.removeAllRejectionsWithCompletionHandler(replied);
  if (operation == 9) {
    agent.synchronousDonatedMeCard(
        [replied](const Result<ContactPtr>& card) { replied(card.ok() ? nullptr : card.error()); });
  }
}

}  // namespace quenlet
