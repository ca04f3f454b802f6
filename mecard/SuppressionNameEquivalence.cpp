#include "mecard/SuppressionNameEquivalence.h"

#include "model/ComparisonKeys.h"

namespace quenlet {

bool SuppressionNameEquivalence::areEquivalent(const PersonNameComponents& a,
                                               const PersonNameComponents& b) {
  return NameKey::keyForName(a) == NameKey::keyForName(b);
}

}  // namespace quenlet
