#pragma once

#include <string>
#include <string_view>

#include "platform/contacts/VCardProperty.h"

namespace quenlet {

// The label that a property's TYPE parameters tell, lower-cased: "home" or "work" when one of them
// is there, else the first that does not just say what the property is ("internet", "voice",
// "pref"). Empty for none.
[[nodiscard]] std::string labelFromTypes(const VCardProperty& property);

// The label in an X-ABLabel value: "_$!<Work>!$_", the mark of a built-in label, is "work"; what a
// person typed is unchanged.
[[nodiscard]] std::string labelFromCustomLabel(std::string_view escaped);

// Whether labelFromTypes gives `label` back when it is written as the property's only TYPE.
[[nodiscard]] bool isTypeLabel(std::string_view label);

// The PREF of a property, 1 (most preferred) to 100; TYPE=pref is 1. 101 for none.
[[nodiscard]] unsigned preferenceOf(const VCardProperty& property);

}  // namespace quenlet
