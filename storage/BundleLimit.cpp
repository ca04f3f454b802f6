#include "storage/BundleLimit.h"

#include "platform/ipc/ServiceInterface.h"

namespace quenlet {

std::optional<BundleLimit> BundleLimit::ofEntitlement(const std::optional<PropertyList>& value) {
  if (!value) return std::nullopt;
  BundleLimit limit;
  const PropertyListArray* identifiers = value->array();
  if (identifiers == nullptr) return limit;
  for (const PropertyList& identifier : *identifiers) {
    if (identifier.string() == nullptr) return BundleLimit();
    limit.allowed.insert(DonationKeys::ofText(*identifier.string()));
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
