#include "tools/commands/TerminalText.h"

#include <algorithm>
#include <optional>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

bool isBetween(char32_t character, char32_t first, char32_t last) {
  return character >= first && character <= last;
}

bool isSafe(char32_t character) {
  const bool isControl = character < 0x20 || isBetween(character, 0x7F, 0x9F);
  // Line and paragraph separator, embeddings and overrides; isolates; marks.
  const bool isDirectional = isBetween(character, 0x2028, 0x202E) ||
                             isBetween(character, 0x2066, 0x2069) ||
                             isBetween(character, 0x200E, 0x200F) || character == 0x061C;
  return !isControl && !isDirectional;
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
