#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "quenlet/Result.h"

namespace quenlet {

// The preferences of a Mozilla program, from its prefs.js. That is a script in form, but no code is
// run: only lines of this form count, and comments and others are left out. Of two lines for one
// name, the last counts. Immutable.
//
//   user_pref("mail.identity.id1.useremail", "ann@example.org");    or a number, true, false
class PreferenceScript final {
 public:
  // An error, which quotes nothing, when a line begins like that and goes on otherwise: the program
  // writes no such line.
  [[nodiscard]] static Result<PreferenceScript> parse(std::string_view text);

  // Nothing unless that preference is a text.
  [[nodiscard]] std::optional<std::string> text(const std::string& name) const;
  // The names that begin with `prefix` and go on, sorted.
  [[nodiscard]] std::vector<std::string> namesBelow(const std::string& prefix) const;

 private:
  using Value = std::variant<std::string, std::int64_t, bool>;
  class Statement;

  std::map<std::string, Value> values;
};

}  // namespace quenlet
