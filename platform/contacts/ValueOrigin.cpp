#include "platform/contacts/ValueOrigin.h"

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

bool sameCluster(const std::optional<std::string>& a, const std::optional<std::string>& b) {
  if (!a || !b) return a.has_value() == b.has_value();
  return canonicallyEqual(*a, *b);
}

}  // namespace

bool operator==(const ValueOrigin& a, const ValueOrigin& b) {
  return canonicallyEqual(a.bundleIdentifier, b.bundleIdentifier) &&
         canonicallyEqual(a.donationIdentifier, b.donationIdentifier) &&
         sameCluster(a.clusterIdentifier, b.clusterIdentifier) &&
         a.donationDate == b.donationDate && a.expirationDate == b.expirationDate;
}

}  // namespace quenlet
