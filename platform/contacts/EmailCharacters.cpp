#include "platform/contacts/EmailCharacters.h"

#include <algorithm>
#include <array>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

struct CharacterRange final {
  char32_t first;
  char32_t last;
};

template <std::size_t Size>
bool isWithin(const std::array<CharacterRange, Size>& ranges, char32_t character) {
  return std::any_of(ranges.begin(), ranges.end(), [character](const CharacterRange& range) {
    return character >= range.first && character <= range.last;
  });
}

constexpr std::array<CharacterRange, 17> separators = {{
    {0x80, 0xA9},
    {0xAB, 0xB4},
    {0xB6, 0xB9},
    {0xBB, 0xBF},
    {0xD7, 0xD7},
    {0xF7, 0xF7},
    {0x60C, 0x60C},
    {0x61B, 0x61F},
    {0x66A, 0x66D},
    {0x6D4, 0x6D4},
    {0x964, 0x965},
    {0x2000, 0x2BFF},
    {0x2E00, 0x2E7F},
    {0x3000, 0x3004},
    {0x3008, 0x3020},
    {0xE000, 0xF8FF},
    {0x1F000, 0x1FAFF},
}};
constexpr std::array<CharacterRange, 4> wideSeparators = {
    {{0xFE00, 0xFE6F}, {0xFEFF, 0xFF65}, {0xFFE0, 0xFFFF}, {0x40000, 0x10FFFF}}};

constexpr std::array<CharacterRange, 8> unspacedScripts = {{{0xE00, 0xEFF},
                                                            {0x1000, 0x109F},
                                                            {0x1780, 0x17FF},
                                                            {0x2E80, 0xA4CF},
                                                            {0xAC00, 0xD7AF},
                                                            {0xF900, 0xFAFF},
                                                            {0xFF66, 0xFFDC},
                                                            {0x20000, 0x3FFFF}}};

}  // namespace

bool email_characters::isUnspaced(char32_t character) {
  return isWithin(unspacedScripts, character);
}

bool email_characters::isLetter(char32_t character) {
  if (character < 0x80) return isASCIILetter(character);
  return !isWithin(separators, character) && !isWithin(wideSeparators, character);
}

email_characters::Character::Character(std::string_view text) {
  if (text.empty()) return;
  std::string_view rest = text;
  value = takeCharacter(rest).value_or(0);
  size = text.size() - rest.size();
}

}  // namespace quenlet
