#include "platform/foundation/PropertyListScanner.h"

#include <charconv>
#include <cmath>

#include "platform/foundation/Base64.h"
#include "platform/foundation/XMLText.h"

namespace quenlet {

bool PropertyListScanner::takeKey(std::string_view key, std::string_view openingTag) {
  constexpr std::string_view openingKey = "<key>";
  // Most keys that are asked for are missing: their first letter tells.
  if (rest.size() <= openingKey.size() || rest[openingKey.size()] != key.front()) return false;
  const std::string_view before = rest;
  if (take(openingKey) && take(key) && take("</key>") && take(openingTag)) return true;
  rest = before;
  return false;
}

std::string_view PropertyListScanner::takeUpToTag() {
  const std::string_view text = rest.substr(0, rest.find('<'));
  rest.remove_prefix(text.size());
  return text;
}

std::nullopt_t PropertyListScanner::fail() {
  rest = {};
  return std::nullopt;
}

bool PropertyListScanner::endDictionary() {
  if (take("</dict>\n")) return true;
  rest = {};
  return false;
}

// Accepted text may be copied as it is, so nothing may pass that the general reader would refuse or
// change, such as a CR.
std::optional<std::string> PropertyListScanner::string(std::string_view key) {
  if (!takeKey(key, "<string>")) return std::nullopt;
  std::string text;
  const std::size_t plainSize = lengthOfPlainPrefix(rest);
  if (plainSize < rest.size() && rest[plainSize] == '&') {
    const std::string_view escaped = takeUpToTag();
    if (escaped.find('\r') != std::string_view::npos ||
        findForbiddenCharacter(escaped) != std::string_view::npos ||
        !appendUnescapedXML(text, escaped)) {
      return fail();
    }
  } else {
    text = rest.substr(0, plainSize);
    rest.remove_prefix(plainSize);
  }
  if (!take("</string>\n")) return fail();
  return text;
}

std::optional<std::string> PropertyListScanner::data(std::string_view key) {
  if (!takeKey(key, "<data>")) return std::nullopt;
  // Base64 has no references: one makes the decoding fail.
  std::optional<std::string> bytes = decodedBase64(takeUpToTag());
  if (!bytes || !take("</data>\n")) return fail();
  return bytes;
}

template <typename Number>
std::optional<Number> PropertyListScanner::takeNumber(std::string_view closingTag) {
  const std::string_view text = takeUpToTag();
  const char* end = text.data() + text.size();
  Number number{};
  const auto [stop, failure] = std::from_chars(text.data(), end, number);
  if (failure != std::errc() || stop != end || !take(closingTag)) return fail();
  return number;
}

std::optional<std::int64_t> PropertyListScanner::integer(std::string_view key) {
  if (!takeKey(key, "<integer>")) return std::nullopt;
  return takeNumber<std::int64_t>("</integer>\n");
}

std::optional<double> PropertyListScanner::real(std::string_view key) {
  if (!takeKey(key, "<real>")) return std::nullopt;
  const std::optional<double> number = takeNumber<double>("</real>\n");
  if (!number || !std::isfinite(*number)) return fail();
  return number;
}

}  // namespace quenlet
