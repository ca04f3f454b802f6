#pragma once

#include <string>
#include <string_view>

#include "platform/contacts/VCardProperty.h"

namespace quenlet {

// The label from a property's TYPE parameters, lower-cased: "home" or "work" if present, else the
// first that does not merely say what the property is ("internet", "voice", "pref"). Empty for
// none.
[[nodiscard]] std::string labelFromTypes(const VCardProperty& property);

// The label in an X-ABLabel value: "work" for the built-in label "_$!<Work>!$_"; a label that a
// person typed is unchanged.
[[nodiscard]] std::string labelFromCustomLabel(std::string_view escaped);

// Whether `label`, written as the only TYPE of a property, is read back by labelFromTypes.
[[nodiscard]] bool isTypeLabel(std::string_view label);

// The PREF of a property, 1 (most preferred) to 100; TYPE=pref is 1. 101 for none.
[[nodiscard]] unsigned preferenceOf(const VCardProperty& property);

}  // namespace quenlet
