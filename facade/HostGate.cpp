#include "facade/HostGate.h"

#include <algorithm>
#include <set>
#include <utility>

#include "facade/FacadeError.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

using Bundles = std::vector<std::string>;

bool isAmong(const Bundles& bundles, const std::string& bundle) {
  return std::find(bundles.begin(), bundles.end(), bundle) != bundles.end();
}

ErrorPtr beyondLimit() {
  return makeFacadeError(NotPermittedError,
                         "the program may not change what is donated under this bundle");
}

}  // namespace

ErrorPtr HostGate::refusalToRead(const CallerIdentity& caller) {
  if (!caller.app && caller.isEntitled) return nullptr;
  return makeFacadeError(NotPermittedError, caller.app
                                                ? "no app may do this"
                                                : "no file of entitlements names the program");
}

ErrorPtr HostGate::refusalOfBundle(const CallerIdentity& caller, const std::string& bundle) {
  if (ErrorPtr refusal = refusalToRead(caller)) return refusal;
  return !caller.bundles || isAmong(*caller.bundles, bundle) ? nullptr : beyondLimit();
}

ErrorPtr HostGate::refusalToReject(const CallerIdentity& caller) {
  if (ErrorPtr refusal = refusalToRead(caller)) return refusal;
  return caller.bundles ? beyondLimit() : nullptr;
}

void HostGate::examineIdentifiers(const CallerIdentity& caller,
                                  const std::vector<std::string>& identifiers, Outcome outcome) {
  if (ErrorPtr refusal = refusalToRead(caller)) return outcome(refusal);
  if (!caller.bundles) return outcome(nullptr);
  examineOwners(*caller.bundles, identifiers, std::move(outcome));
}

void HostGate::examineOwners(std::vector<std::string> bundles,
                             const std::vector<std::string>& identifiers, Outcome outcome) {
  // As the agent tells identifiers apart.
  std::set<std::string> asked;
  for (const std::string& identifier : identifiers) asked.insert(canonicalKey(identifier));
  agent.donations([bundles = std::move(bundles), asked = std::move(asked),
                   outcome = std::move(outcome)](const auto& held) {
    if (!held.ok()) return outcome(held.error());
    const bool isWithin =
        std::all_of(held.value().begin(), held.value().end(), [&](const Donation& donation) {
          return isAmong(bundles, donation.bundleIdentifier) ||
                 !asked.contains(canonicalKey(donation.donationIdentifier));
        });
    outcome(isWithin ? nullptr : beyondLimit());
  });
}

}  // namespace quenlet
