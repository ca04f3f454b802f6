#pragma once

#include <string>

// Words of a shell's command line. Pure functions.
namespace quenlet {

// `text` as a word, in quotes only if it needs them.
[[nodiscard]] std::string shellWord(const std::string& text);
// The same for an operand of a command: behind "--" if it looks like an option.
[[nodiscard]] std::string shellOperand(const std::string& text);
// `text` in quotes.
[[nodiscard]] std::string shellQuoted(const std::string& text);

}  // namespace quenlet
