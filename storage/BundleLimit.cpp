#include "storage/BundleLimit.h"

#include "platform/ipc/ServiceInterface.h"
#include "protocol/ClientEntitlements.h"

namespace quenlet {

std::optional<BundleLimit> BundleLimit::ofEntitlement(const std::optional<PropertyList>& value) {
  if (!value) return std::nullopt;
  BundleLimit limit;
  for (const std::string& bundle : bundlesIn(*value)) {
    limit.allowed.insert(DonationKeys::ofText(bundle));
  }
  return limit;
}

bool BundleLimit::allows(const std::string& bundleIdentifier) const {
  return allowed.contains(DonationKeys::ofText(bundleIdentifier));
}

ErrorPtr BundleLimit::refusal() {
  return makeServiceError(ServiceErrorCode::bundleNotAllowed,
                          "the program may not change what is donated under this bundle");
}

}  // namespace quenlet
