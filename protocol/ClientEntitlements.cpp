#include "protocol/ClientEntitlements.h"

namespace quenlet {

bool grants(const std::optional<PropertyList>& value) {
  if (!value) return false;
  if (const bool* flag = value->boolean()) return *flag;
  if (const std::int64_t* number = value->integer()) return *number != 0;
  if (const double* number = value->real()) return *number != 0;
  return false;
}

std::vector<std::string> bundlesIn(const PropertyList& value) {
  std::vector<std::string> bundles;
  if (value.array() == nullptr) return bundles;
  for (const PropertyList& bundle : *value.array()) {
    if (bundle.string() == nullptr) return {};
    bundles.push_back(*bundle.string());
  }
  return bundles;
}

}  // namespace quenlet
