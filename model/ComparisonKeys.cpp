#include "model/ComparisonKeys.h"

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

std::optional<std::string> foldedKey(const std::optional<std::string>& text) {
  if (!text) return std::nullopt;
  return canonicalKey(lowercased(*text));
}

}  // namespace

NameKey NameKey::keyForName(const PersonNameComponents& name) {
  return {foldedKey(name.givenName), foldedKey(name.familyName)};
}

}  // namespace quenlet
