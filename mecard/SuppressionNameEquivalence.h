#pragma once

#include "platform/contacts/PersonNameComponents.h"

namespace quenlet {

// Decides whether two names can be the same person's: given and family names are the same but for
// letter case; a name that is absent matches only one that is absent, too. Nothing else counts.
// Symmetric. Stateless; any thread.
class SuppressionNameEquivalence final {
 public:
  [[nodiscard]] static bool areEquivalent(const PersonNameComponents& a,
                                          const PersonNameComponents& b);
};

}  // namespace quenlet
