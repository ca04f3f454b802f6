#pragma once

#include <functional>
#include <string>
#include <vector>

#include "facade/CallerIdentity.h"
#include "quenlet/Client.h"

namespace quenlet {

// Lets programs of the host do what the agent would let them do itself. It sees one client for all
// of them, so what their entitlements limit to some bundles is limited here. Use on the loop's
// thread.
class HostGate final {
 public:
  using Outcome = std::function<void(const ErrorPtr& refusal)>;

  explicit HostGate(Client& client) : agent(client) {}

  // Null when it may read the card and all donations.
  [[nodiscard]] static ErrorPtr refusalToRead(const CallerIdentity& caller);
  // The same for changes under this bundle.
  [[nodiscard]] static ErrorPtr refusalOfBundle(const CallerIdentity& caller,
                                                const std::string& bundle);
  // The same for rejections, which drop values of every donor.
  [[nodiscard]] static ErrorPtr refusalToReject(const CallerIdentity& caller);

  // Whether it may replace or remove what these identifiers stand for now. Asks the agent only
  // for a program with a limit.
  void examineIdentifiers(const CallerIdentity& caller, const std::vector<std::string>& identifiers,
                          Outcome outcome);
  // Whether what these identifiers stand for now, if anything, is all of these bundles'. The agent
  // finds values by their identifiers alone, from any donor.
  void examineOwners(std::vector<std::string> bundles, const std::vector<std::string>& identifiers,
                     Outcome outcome);

 private:
  Client& agent;
};

}  // namespace quenlet
