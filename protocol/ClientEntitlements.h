#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/PropertyList.h"

// The entitlements of programs that the agent looks at.
namespace quenlet {

// Either of the two lets a program talk to the agent, if its value grants it.
inline constexpr char ContactsEntitlement[] = "ovaro.private.contacts";
inline constexpr char SuggestionsEntitlement[] = "ovaro.private.suggestions.contacts";
// The bundles under which a program may donate, replace and remove; all without this one.
inline constexpr char BundlesEntitlement[] = "org.quenlet.bundles";

// The code, in GeneralErrorDomain, of a refusal for want of the first two.
inline constexpr std::int64_t MissingEntitlementCode = 4097;

// Only `true` or a number other than zero grants; text and lists never do.
[[nodiscard]] bool grants(const std::optional<PropertyList>& value);
// The bundles in a value of BundlesEntitlement: none when it is not a list of texts.
[[nodiscard]] std::vector<std::string> bundlesIn(const PropertyList& value);

}  // namespace quenlet
