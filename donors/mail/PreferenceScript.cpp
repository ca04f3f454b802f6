#include "donors/mail/PreferenceScript.h"

#include <charconv>
#include <utility>

#include "foreign/LineScanner.h"
#include "platform/foundation/Text.h"

namespace quenlet {

// One line, taken apart from its front.
class PreferenceScript::Statement final {
 public:
  explicit Statement(std::string_view line) : rest(line) {}

  // Whether it is to be one; asked first.
  [[nodiscard]] bool begins() { return take("user_pref"); }
  // The name and the value, unless the rest has another form.
  [[nodiscard]] std::optional<std::pair<std::string, Value>> read() {
    if (!take("(")) return std::nullopt;
    std::optional<std::string> name = takeText();
    if (!name || !take(",")) return std::nullopt;
    std::optional<Value> value = takeValue();
    if (!value || !take(")") || !take(";")) return std::nullopt;
    return std::pair(*std::move(name), *std::move(value));
  }

 private:
  // Takes `token` and blanks before it, if it comes next.
  bool take(std::string_view token) {
    skipBlanks();
    if (!rest.starts_with(token)) return false;
    rest.remove_prefix(token.size());
    return true;
  }

  void skipBlanks() {
    while (!rest.empty() && (rest.front() == ' ' || rest.front() == '\t')) rest.remove_prefix(1);
  }

  std::optional<Value> takeValue() {
    if (take("true")) return true;
    if (take("false")) return false;
    skipBlanks();
    if (rest.starts_with('"') || rest.starts_with('\'')) return takeText();
    std::int64_t number = 0;
    const auto [end, failure] = std::from_chars(rest.begin(), rest.end(), number);
    if (failure != std::errc()) return std::nullopt;
    rest.remove_prefix(static_cast<std::size_t>(end - rest.begin()));
    return number;
  }

  std::optional<std::string> takeText() {
    skipBlanks();
    if (rest.empty() || (rest.front() != '"' && rest.front() != '\'')) return std::nullopt;
    const char quote = rest.front();
    rest.remove_prefix(1);
    std::string text;
    while (!rest.empty() && rest.front() != quote) {
      const char first = rest.front();
      rest.remove_prefix(1);
      if (first != '\\') {
        text += first;
      } else if (!takeEscaped(text)) {
        return std::nullopt;
      }
    }
    return take(std::string_view(&quote, 1)) && isValidUTF8(text) ? std::optional(text)
                                                                  : std::nullopt;
  }

  // What follows a backslash.
  bool takeEscaped(std::string& text) {
    if (rest.empty()) return false;
    const char escape = rest.front();
    rest.remove_prefix(1);
    switch (escape) {
      case 'n':
        text += '\n';
        return true;
      case 'r':
        text += '\r';
        return true;
      case '"':
      case '\'':
      case '\\':
        text += escape;
        return true;
      case 'x':
        return appendNumber(text, takeNumber(2));
      case 'u':
        return appendNumber(text, takeUTF16());
      default:
        return false;
    }
  }

  std::optional<std::uint32_t> takeNumber(std::size_t digits) {
    const auto number = hexadecimalNumber(rest.substr(0, digits), digits);
    if (number) rest.remove_prefix(digits);
    return number;
  }

  // One unit, or the two of a character beyond the first plane.
  std::optional<std::uint32_t> takeUTF16() {
    const auto high = takeNumber(4);
    if (!high || *high < 0xD800 || *high > 0xDBFF) return high;
    if (!rest.starts_with("\\u")) return std::nullopt;
    rest.remove_prefix(2);
    const auto low = takeNumber(4);
    if (!low || *low < 0xDC00 || *low > 0xDFFF) return std::nullopt;
    return 0x10000 + ((*high - 0xD800) << 10) + (*low - 0xDC00);
  }

  static bool appendNumber(std::string& text, std::optional<std::uint32_t> number) {
    const bool isCharacter = number && *number != 0 && (*number < 0xD800 || *number > 0xDFFF);
    if (isCharacter) appendCharacter(text, *number);
    return isCharacter;
  }

  std::string_view rest;
};

Result<PreferenceScript> PreferenceScript::parse(std::string_view text) {
  PreferenceScript script;
  for (LineScanner lines(text); lines.next();) {
    Statement line(lines.line());
    if (!line.begins()) continue;
    auto statement = line.read();
    if (!statement) {
      return Result<PreferenceScript>::failure(lines.fault("begins a preference and is not one"));
    }
    script.values.insert_or_assign(std::move(statement->first), std::move(statement->second));
  }
  return Result<PreferenceScript>::success(std::move(script));
}

std::optional<std::string> PreferenceScript::text(const std::string& name) const {
  const auto found = values.find(name);
  const std::string* text =
      found == values.end() ? nullptr : std::get_if<std::string>(&found->second);
  return text == nullptr ? std::nullopt : std::optional(*text);
}

std::vector<std::string> PreferenceScript::namesBelow(const std::string& prefix) const {
  std::vector<std::string> names;
  for (auto entry = values.upper_bound(prefix);
       entry != values.end() && entry->first.starts_with(prefix); ++entry) {
    names.push_back(entry->first);
  }
  return names;
}

}  // namespace quenlet
