#include "platform/ipc/ServiceLimits.h"

#include <sys/resource.h>

#include <algorithm>

namespace quenlet {

ServiceLimits ServiceLimits::forThisProcess() {
  constexpr rlim_t reservedDescriptors = 64;
  ServiceLimits limits;
  rlimit files{};
  if (::getrlimit(RLIMIT_NOFILE, &files) != 0) return limits;
  const rlim_t left = std::max(files.rlim_cur, reservedDescriptors + 1) - reservedDescriptors;
  limits.connections = std::min<rlim_t>(limits.connections, left);
  return limits;
}

}  // namespace quenlet
