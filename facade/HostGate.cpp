#include "facade/HostGate.h"

#include <algorithm>
#include <set>

#include "facade/FacadeError.h"

namespace quenlet {
namespace {

bool mayChange(const CallerIdentity& caller, const std::string& bundle) {
  if (!caller.bundles) return true;
  return std::find(caller.bundles->begin(), caller.bundles->end(), bundle) != caller.bundles->end();
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
  return mayChange(caller, bundle) ? nullptr : beyondLimit();
}

ErrorPtr HostGate::refusalToReject(const CallerIdentity& caller) {
  if (ErrorPtr refusal = refusalToRead(caller)) return refusal;
  return caller.bundles ? beyondLimit() : nullptr;
}

void HostGate::examineIdentifiers(const CallerIdentity& caller,
                                  const std::vector<std::string>& identifiers, Outcome outcome) {
  if (ErrorPtr refusal = refusalToRead(caller)) return outcome(refusal);
  if (!caller.bundles) return outcome(nullptr);
  agent.donations([caller, asked = std::set(identifiers.begin(), identifiers.end()),
                   outcome = std::move(outcome)](const auto& held) {
    if (!held.ok()) return outcome(held.error());
    const bool isWithin =
        std::all_of(held.value().begin(), held.value().end(), [&](const Donation& donation) {
          return !asked.contains(donation.donationIdentifier) ||
                 mayChange(caller, donation.bundleIdentifier);
        });
    outcome(isWithin ? nullptr : beyondLimit());
  });
}

}  // namespace quenlet
