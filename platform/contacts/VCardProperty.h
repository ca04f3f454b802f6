#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quenlet {

// One content line, split. The views are into the line. Parameters are decoded on request, which
// keeps every property small.
struct VCardProperty final {
  std::string group;            // lower case, empty for none
  std::string name;             // upper case
  std::string_view parameters;  // well formed: ";TYPE=home,cell;PREF=1"
  std::string_view value;       // still escaped

  using ValueVisitor = std::function<void(std::string_view value)>;
  // Visits every value of the parameters of this name (upper case), in order, with RFC 6868 escapes
  // decoded. A parameter without a name (";HOME;BASE64") is a TYPE, or the ENCODING when it is a
  // word for one.
  void visitParameterValues(std::string_view parameterName, const ValueVisitor& visit) const;
  // The first such value, empty for none.
  [[nodiscard]] std::string parameterValue(std::string_view parameterName) const;
};

// The name of the property on a line, in upper case, without its group; empty for none.
[[nodiscard]] std::string nameOfVCardLine(std::string_view line);

// Splits one line; nothing when it is not a property. Does not interpret the bytes.
[[nodiscard]] std::optional<VCardProperty> parseVCardProperty(std::string_view line);

}  // namespace quenlet
