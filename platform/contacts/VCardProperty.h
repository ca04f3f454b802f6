#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "platform/foundation/Either.h"

namespace quenlet {

// One content line taken apart. The views are into the line. Parameters are decoded when they are
// asked for, so that a property is small whatever its line holds.
struct VCardProperty final {
  std::string group;            // lower case, empty for none
  std::string name;             // upper case
  std::string_view parameters;  // well formed: ";TYPE=home,cell;PREF=1"
  std::string_view value;       // still escaped
  std::size_t lineNumber = 0;

  using ValueVisitor = std::function<void(std::string_view value)>;
  // Every value of the parameters of this name (upper case), in order, RFC 6868 escapes undone.
  void visitParameterValues(std::string_view parameterName, const ValueVisitor& visit) const;
  // The first of them, empty for none.
  [[nodiscard]] std::string parameterValue(std::string_view parameterName) const;
};

// Takes one unfolded line apart, or says what is wrong with it. Checks that the line is UTF-8
// without control characters.
[[nodiscard]] Result<VCardProperty> parseVCardProperty(std::string_view line,
                                                       std::size_t lineNumber);

}  // namespace quenlet
