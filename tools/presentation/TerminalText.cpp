#include "tools/presentation/TerminalText.h"

#include <algorithm>
#include <optional>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

bool isSafe(char32_t character) {
  return !isControlOrLineBreak(character) && !isDirectional(character);
}

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const std::optional<char32_t> character = takeCharacter(text);
    appendCharacter(shown, character && isSafe(*character) ? *character : replacementCharacter);
  }
  return shown;
}

std::size_t countCharacters(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

}  // namespace quenlet
