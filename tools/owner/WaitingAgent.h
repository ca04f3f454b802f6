#pragma once

#include <memory>
#include <string>
#include <vector>

#include "model/DonationValue.h"
#include "protocol/CorvelProtocol.h"
#include "quenlet/Result.h"

namespace quenlet {

// The agent's operations on donations, each of which waits for the answer. Stateless.
class WaitingAgent final {
 public:
  explicit WaitingAgent(CorvelProtocol& askedAgent) : agent(askedAgent) {}

  // All donations, in the agent's order.
  [[nodiscard]] Result<std::shared_ptr<const DonationValues>> donations() const;
  // Null once they are durable. Asks nothing for no values.
  [[nodiscard]] ErrorPtr donate(const DonationValues& values) const;
  // The same in as many requests as it takes to keep each below the bound of a message. An error
  // says how many of the values are in place: those before the refused request.
  [[nodiscard]] ErrorPtr donateInParts(const DonationValues& values) const;
  // Null once they are gone for good. Asks nothing for no identifiers.
  [[nodiscard]] ErrorPtr remove(const std::vector<std::string>& donationIdentifiers) const;
  // Null once all of that donor are gone for good.
  [[nodiscard]] ErrorPtr removeAllOf(const std::string& bundleIdentifier) const;
  // Null once the agent follows that change of an account.
  [[nodiscard]] ErrorPtr changeAccount(const AccountPtr& from, const AccountPtr& to) const;

 private:
  CorvelProtocol& agent;
};

}  // namespace quenlet
