#include "platform/contacts/VCardProperty.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/contacts/VCardErrors.h"
#include "platform/contacts/VCardText.h"
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

// "^n", "^^" and "^'" stand for a line end, a caret and a double quote.
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

// Walks along one line; each step leaves `rest` behind what it took, or sets `failure`.
class PropertyParser final {
 public:
  PropertyParser(std::string_view line, std::size_t lineNumber) : rest(line) {
    property.lineNumber = lineNumber;
  }

  Result<VCardProperty> parse() && {
    parseName();
    const std::string_view fromParameters = rest;
    while (!failure && rest.starts_with(';')) parseParameter();
    if (!failure && !rest.starts_with(':')) fail("a property without a value");
    if (failure) return Result<VCardProperty>::right(failure);
    property.parameters = fromParameters.substr(0, fromParameters.size() - rest.size());
    property.value = rest.substr(1);
    return Result<VCardProperty>::left(std::move(property));
  }

 private:
  void fail(const char* offence) { failure = makeInvalidVCardError(property.lineNumber, offence); }

  void parseName() {
    std::string_view name = takeName(rest);
    if (rest.starts_with('.')) {
      property.group = lowercased(name);
      rest.remove_prefix(1);
      name = takeName(rest);
    }
    property.name = upperCased(name);
    if (name.empty()) fail("no property");
  }

  void parseParameter() {
    rest.remove_prefix(1);
    if (takeName(rest).empty()) return fail("a parameter without a name");
    if (!rest.starts_with('=')) {
      failure =
          makeVCardError(ContactErrorCode::unsupportedVersion, property.lineNumber,
                         "a bare parameter, as vCard 2.1 has them; only 3.0 and 4.0 are read");
      return;
    }
    do {
      rest.remove_prefix(1);
      if (!takeParameterValue(rest)) return fail("a quoted parameter without its end");
    } while (rest.starts_with(','));
  }

  std::string_view rest;
  VCardProperty property;
  ErrorPtr failure;
};

}  // namespace

void VCardProperty::visitParameterValues(std::string_view parameterName,
                                         const ValueVisitor& visit) const {
  std::string_view rest = parameters;
  while (!rest.empty()) {
    rest.remove_prefix(1);
    const bool asked = upperCased(takeName(rest)) == parameterName;
    do {
      rest.remove_prefix(1);
      const auto value = takeParameterValue(rest);
      if (asked && value) visit(withoutCarets(*value));
    } while (rest.starts_with(','));
  }
}

std::string VCardProperty::parameterValue(std::string_view parameterName) const {
  std::optional<std::string> first;
  visitParameterValues(parameterName, [&first](std::string_view value) {
    if (!first) first = value;
  });
  return first.value_or(std::string());
}

Result<VCardProperty> parseVCardProperty(std::string_view line, std::size_t lineNumber) {
  const auto refuse = [lineNumber](const char* offence) {
    return Result<VCardProperty>::right(makeInvalidVCardError(lineNumber, offence));
  };
  if (!isValidUTF8(line)) return refuse("text that is not UTF-8");
  if (holdsControlCharacter(line)) return refuse("a control character");
  return PropertyParser(line, lineNumber).parse();
}

}  // namespace quenlet
