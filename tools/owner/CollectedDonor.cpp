#include "tools/owner/CollectedDonor.h"

#include <utility>
#include <vector>

#include "tools/owner/HeldDonations.h"
#include "tools/owner/WaitingAgent.h"

namespace quenlet {
namespace {

// The keys of what the agent took; counts the rest.
DonationKeySet takenOf(const DonationValues& values, const HeldDonations& held,
                       CollectedDonor& collected) {
  DonationKeySet taken;
  DonationKeySet leftOut;
  for (const DonationValuePtr& value : values) {
    (held.hasGift(*value) ? taken : leftOut).insert(value->donationKey());
  }
  collected.donated = taken.size();
  collected.leftOut = leftOut.size();
  return taken;
}

}  // namespace

Result<CollectedDonor> CollectedDonor::replace(
    CorvelProtocol& agent, const std::string& bundleIdentifier, const DonationValues& values,
    const std::shared_ptr<const DonationValues>& before) {
  using Collected = Result<CollectedDonor>;
  const WaitingAgent waiting(agent);
  if (ErrorPtr error = waiting.donateInParts(values)) return Collected::failure(std::move(error));
  const auto list = waiting.donations();
  if (!list.ok()) return Collected::failure(list.error());
  const HeldDonations held(list.value());
  const HeldDonations heldBefore(before);
  CollectedDonor collected;
  const DonationKeySet taken = takenOf(values, held, collected);
  const Fingerprint bundle = DonationKeys::ofText(bundleIdentifier);
  std::vector<std::string> gone;
  for (const DonationValuePtr& value : held.list()) {
    if (value->bundleKey() == bundle && !taken.contains(value->donationKey()) &&
        heldBefore.hasGift(*value)) {
      gone.push_back(value->decoded().origin.donationIdentifier);
    }
  }
  collected.removed = gone.size();
  ErrorPtr error = waiting.remove(gone);
  return error ? Collected::failure(std::move(error)) : Collected::success(collected);
}

}  // namespace quenlet
