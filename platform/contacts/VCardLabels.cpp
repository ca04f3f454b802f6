#include "platform/contacts/VCardLabels.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "platform/contacts/VCardText.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

constexpr unsigned leastPreferred = 100;

bool isPlace(std::string_view type) { return type == "home" || type == "work"; }

bool saysNoPlace(std::string_view type) {
  constexpr std::array<std::string_view, 11> types = {"internet", "pref",   "voice",     "x400",
                                                      "msg",      "text",   "dom",       "intl",
                                                      "postal",   "parcel", "x-internet"};
  return std::find(types.begin(), types.end(), type) != types.end();
}

// Every TYPE in lower case. A quoted value may hold several.
template <typename Visit>
void visitTypes(const VCardProperty& property, const Visit& visit) {
  property.visitParameterValues("TYPE", [&visit](std::string_view value) {
    while (!value.empty()) {
      const std::string_view type = value.substr(0, value.find(','));
      visit(lowercased(trimmed(type)));
      value.remove_prefix(std::min(type.size() + 1, value.size()));
    }
  });
}

}  // namespace

std::string labelFromTypes(const VCardProperty& property) {
  std::string label;
  visitTypes(property, [&label](const std::string& type) {
    if (saysNoPlace(type)) return;
    if (label.empty() || (isPlace(type) && !isPlace(label))) label = type;
  });
  return label;
}

std::string labelFromCustomLabel(std::string_view escaped) {
  constexpr std::string_view opening = "_$!<";
  constexpr std::string_view closing = ">!$_";
  const std::string text = unescapedVCardText(escaped);
  std::string_view label = trimmed(text);
  if (label.size() < opening.size() + closing.size() || !label.starts_with(opening) ||
      !label.ends_with(closing)) {
    return std::string(label);
  }
  label.remove_prefix(opening.size());
  label.remove_suffix(closing.size());
  return lowercased(label);
}

bool isTypeLabel(std::string_view label) {
  return !label.empty() && !saysNoPlace(label) &&
         std::all_of(label.begin(), label.end(), [](char c) {
           return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
         });
}

unsigned preferenceOf(const VCardProperty& property) {
  unsigned preference = leastPreferred + 1;
  const std::string number = property.parameterValue("PREF");
  unsigned value = 0;
  const auto [end, failure] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (failure == std::errc() && end == number.data() + number.size() && value >= 1 &&
      value <= leastPreferred) {
    preference = value;
  }
  visitTypes(property, [&preference](const std::string& type) {
    if (type == "pref") preference = 1;
  });
  return preference;
}

}  // namespace quenlet
