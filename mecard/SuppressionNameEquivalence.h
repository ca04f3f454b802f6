#pragma once

#include "platform/contacts/PersonNameComponents.h"

namespace quenlet {

// Decides whether two names can be the same person's: given and family names are equal in any
// letter case, and an absent name equals only an absent one. Nothing else counts. Symmetric.
// Stateless; any thread.
class SuppressionNameEquivalence final {
 public:
  [[nodiscard]] static bool areEquivalent(const PersonNameComponents& a,
                                          const PersonNameComponents& b);
};

}  // namespace quenlet
