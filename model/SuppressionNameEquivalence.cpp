#include "model/SuppressionNameEquivalence.h"

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

std::string folded(const std::string& text) { return canonicalKey(lowercased(text)); }

}  // namespace

Fingerprint SuppressionNameEquivalence::keyOf(const PersonNameComponents& name) {
  std::string key = "-";
  if (name.givenName) {
    const std::string given = folded(*name.givenName);
    // The size marks where one ends and the other begins.
    key = std::to_string(given.size()) + ":" + given;
  }
  if (name.familyName) key += "+" + folded(*name.familyName);
  return Fingerprint::of(key);
}

}  // namespace quenlet
