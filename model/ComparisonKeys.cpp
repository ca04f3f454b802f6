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
  const std::optional<std::string> givenName = foldedKey(name.givenName);
  const std::optional<std::string> familyName = foldedKey(name.familyName);
  // The size marks where one ends and the other begins.
  std::string key = givenName ? std::to_string(givenName->size()) + ":" + *givenName : "-";
  if (familyName) key += "+" + *familyName;
  return {std::move(key)};
}

}  // namespace quenlet
