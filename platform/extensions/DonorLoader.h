#pragma once

#include <string>

#include "platform/extensions/DonorExtension.h"
#include "platform/foundation/Future.h"

namespace quenlet {

// Loads installed donors. Thread-safe.
class DonorLoader {
 public:
  virtual ~DonorLoader() = default;
  // `donorWithIdentifier:`. Fails when nothing usable is installed for that bundle identifier, or
  // the donor cannot be started. Completes on any thread, perhaps before it returns.
  [[nodiscard]] virtual Future<DonorObjectPtr> donorWithIdentifier(
      const std::string& bundleIdentifier) = 0;
};

}  // namespace quenlet
