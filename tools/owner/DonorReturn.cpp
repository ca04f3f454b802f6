#include "tools/owner/DonorReturn.h"

#include "platform/extensions/ExtensionCatalog.h"
#include "platform/ipc/EntitlementDatabase.h"
#include "tools/owner/AgentDonations.h"

namespace quenlet {

DonorReturn DonorReturn::of(const DonationValues& donations, const std::filesystem::path& home) {
  const ExtensionCatalog catalog(
      ManifestDirectory::directoriesOf(EntitlementDatabase::prefixOfRunningProgram(), home));
  const auto installed = catalog.read();
  DonorReturn counts;
  DonationValues rest;
  for (const DonationValuePtr& donation : donations) {
    const std::string bundle = donation->decoded().origin.bundleIdentifier;
    const auto manifest = installed->manifest(bundle);
    if (bundle == AccountsBundleIdentifier) {
      ++counts.accounts;
    } else if (bundle == SIMCardBundleIdentifier) {
      ++counts.simCards;
    } else if (manifest.ok() && manifest.value()->isDonorExtension()) {
      ++counts.extensions;
    } else {
      rest.push_back(donation);
    }
  }
  counts.others = rest.size();
  counts.otherDonors = donorsOf(rest);
  return counts;
}

}  // namespace quenlet
