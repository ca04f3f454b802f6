#include "tools/owner/ShellWord.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace quenlet {
namespace {

bool isPlain(unsigned char character) {
  constexpr std::string_view plain = "@%+:,./-_";
  return plain.find(static_cast<char>(character)) != std::string_view::npos ||
         (character < 0x80 && std::isalnum(character) != 0);
}

}  // namespace

std::string shellWord(const std::string& text) {
  if (!text.empty() && std::all_of(text.begin(), text.end(), isPlain)) return text;
  return shellQuoted(text);
}

std::string shellOperand(const std::string& text) {
  return (text.starts_with('-') ? "-- " : "") + shellWord(text);
}

std::string shellQuoted(const std::string& text) {
  std::string quoted = "'";
  for (const char character : text) {
    if (character == '\'') {
      quoted += "'\\''";
    } else {
      quoted += character;
    }
  }
  return quoted + "'";
}

}  // namespace quenlet
