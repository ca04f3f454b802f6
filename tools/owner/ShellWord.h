#pragma once

#include <string>

// Words of a shell's command line. Pure functions.
namespace quenlet {

// `text` as a word, in quotes only if it needs them.
[[nodiscard]] std::string shellWord(const std::string& text);
// The same for what is no option of the command, although it may look like one: behind a "--" then.
[[nodiscard]] std::string shellOperand(const std::string& text);
// `text` in quotes.
[[nodiscard]] std::string shellQuoted(const std::string& text);

}  // namespace quenlet
