#include "platform/contacts/VCardProperty.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

bool isNameCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '_';
}

std::string upperCased(std::string_view name) {
  std::string upper(name);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

// "^n", "^^" and "^'" stand for a line end, a caret and a double quote (RFC 6868).
std::string withoutCarets(std::string_view escaped) {
  std::string value;
  for (std::size_t i = 0; i < escaped.size(); ++i) {
    const char next = escaped[i] == '^' && i + 1 < escaped.size() ? escaped[i + 1] : '\0';
    if (next != 'n' && next != '^' && next != '\'') {
      value += escaped[i];
      continue;
    }
    value += next == 'n' ? '\n' : next == '^' ? '^' : '"';
    ++i;
  }
  return value;
}

std::string_view takeName(std::string_view& rest) {
  const auto* end = std::find_if_not(rest.begin(), rest.end(), isNameCharacter);
  const std::string_view name = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
  rest.remove_prefix(name.size());
  return name;
}

bool isEncoding(std::string_view word) {
  constexpr std::array<std::string_view, 5> words = {"base64", "b", "quoted-printable", "8bit",
                                                     "7bit"};
  return std::find(words.begin(), words.end(), lowercased(word)) != words.end();
}

// Takes the group and the name off the front of a line.
std::pair<std::string_view, std::string_view> takeGroupAndName(std::string_view& rest) {
  std::string_view group;
  std::string_view name = takeName(rest);
  if (rest.starts_with('.')) {
    rest.remove_prefix(1);
    group = std::exchange(name, takeName(rest));
  }
  return {group, name};
}

// Takes a value off `rest`, still with its carets; nothing when its closing quote is missing.
std::optional<std::string_view> takeParameterValue(std::string_view& rest) {
  const bool quoted = rest.starts_with('"');
  if (quoted) rest.remove_prefix(1);
  const std::size_t end = quoted ? rest.find('"') : rest.find_first_of(",;:");
  if (quoted && end == std::string_view::npos) return std::nullopt;
  const std::string_view value = rest.substr(0, end);
  rest.remove_prefix(value.size() + (quoted ? 1 : 0));
  return value;
}

// Takes a parameter off `rest`, which begins with its semicolon, and calls `visit` with its name,
// empty for none, and each value. False when a closing quote is missing.
template <typename Visit>
bool takeParameter(std::string_view& rest, const Visit& visit) {
  rest.remove_prefix(1);
  const std::string_view fromName = rest;
  std::string_view name = takeName(rest);
  if (rest.starts_with('=')) {
    rest.remove_prefix(1);
  } else {
    // A bare value, as in ";HOME": it only looked like a name.
    rest = fromName;
    name = {};
  }
  while (true) {
    const auto value = takeParameterValue(rest);
    if (!value) return false;
    visit(name, *value);
    if (!rest.starts_with(',')) return true;
    rest.remove_prefix(1);
  }
}

}  // namespace

void VCardProperty::visitParameterValues(std::string_view parameterName,
                                         const ValueVisitor& visit) const {
  std::string_view rest = parameters;
  const auto visitIfAsked = [&](std::string_view name, std::string_view value) {
    const bool asked = name.empty() ? parameterName == (isEncoding(value) ? "ENCODING" : "TYPE")
                                    : upperCased(name) == parameterName;
    if (asked) visit(withoutCarets(value));
  };
  while (!rest.empty() && takeParameter(rest, visitIfAsked)) {
  }
}

std::string VCardProperty::parameterValue(std::string_view parameterName) const {
  std::optional<std::string> first;
  visitParameterValues(parameterName, [&first](std::string_view value) {
    if (!first) first = value;
  });
  return first.value_or(std::string());
}

std::string nameOfVCardLine(std::string_view line) {
  return upperCased(takeGroupAndName(line).second);
}

std::optional<VCardProperty> parseVCardProperty(std::string_view line) {
  const auto [group, name] = takeGroupAndName(line);
  const std::string_view fromParameters = line;
  while (line.starts_with(';')) {
    if (!takeParameter(line, [](std::string_view, std::string_view) {})) return std::nullopt;
  }
  if (name.empty() || !line.starts_with(':')) return std::nullopt;
  return VCardProperty{.group = lowercased(group),
                       .name = upperCased(name),
                       .parameters = fromParameters.substr(0, fromParameters.size() - line.size()),
                       .value = line.substr(1)};
}

}  // namespace quenlet
