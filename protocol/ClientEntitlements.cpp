#include "protocol/ClientEntitlements.h"

namespace quenlet {

bool grants(const std::optional<PropertyList>& value) {
  if (!value) return false;
  if (const bool* flag = value->boolean()) return *flag;
  if (const std::int64_t* number = value->integer()) return *number != 0;
  if (const double* number = value->real()) return *number != 0;
  return false;
}

}  // namespace quenlet
