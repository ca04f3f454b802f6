#pragma once

#include "platform/contacts/PersonNameComponents.h"
#include "platform/foundation/KeyedHash.h"

namespace quenlet {

// Decides whether two names can be the same person's: given and family names are equal in any
// letter case, and an absent name equals only an absent one. Nothing else counts. Stateless.
class SuppressionNameEquivalence final {
 public:
  SuppressionNameEquivalence() = delete;

  // Equal for equivalent names: records keep it, and comparisons go by it.
  [[nodiscard]] static Fingerprint keyOf(const PersonNameComponents& name);
  [[nodiscard]] static bool areEquivalent(const PersonNameComponents& a,
                                          const PersonNameComponents& b) {
    return keyOf(a) == keyOf(b);
  }
};

}  // namespace quenlet
