#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quenlet {

// One content line taken apart. The views are into the line. Parameters are decoded when they are
// asked for, so that a property is small whatever its line holds.
struct VCardProperty final {
  std::string group;            // lower case, empty for none
  std::string name;             // upper case
  std::string_view parameters;  // well formed: ";TYPE=home,cell;PREF=1"
  std::string_view value;       // still escaped

  using ValueVisitor = std::function<void(std::string_view value)>;
  // Every value of the parameters of this name (upper case), in order, RFC 6868 escapes undone. A
  // parameter without a name (";HOME;BASE64") is a TYPE, or the ENCODING when it is a word for one.
  void visitParameterValues(std::string_view parameterName, const ValueVisitor& visit) const;
  // The first of them, empty for none.
  [[nodiscard]] std::string parameterValue(std::string_view parameterName) const;
};

// The name of the property on a line, in upper case, without its group; empty when there is none.
[[nodiscard]] std::string nameOfVCardLine(std::string_view line);

// Takes one line apart; nothing when it is no property. Does not look at what the bytes mean.
[[nodiscard]] std::optional<VCardProperty> parseVCardProperty(std::string_view line);

}  // namespace quenlet
