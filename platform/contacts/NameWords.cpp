#include "platform/contacts/NameWords.h"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string_view>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

bool isOneOf(std::string_view word, std::initializer_list<std::string_view> table) {
  return std::find(table.begin(), table.end(), word) != table.end();
}

// Lower-cased and without dots: "Ph.D." is "phd".
std::string plainForm(const std::string& word) {
  std::string plain = lowercased(word);
  std::erase(plain, '.');
  return plain;
}

// Whether a predicate holds for all characters of a word in UTF-8.
template <typename Predicate>
bool allCharacters(std::string_view word, Predicate predicate) {
  while (!word.empty()) {
    const std::optional<char32_t> character = takeCharacter(word);
    if (!character || !predicate(*character)) return false;
  }
  return true;
}

}  // namespace

bool name_words::isPrefix(const std::string& word) {
  // "Dr.-Ing." and "Univ.-Prof.": two titles in one word.
  if (const std::size_t hyphen = word.find(".-"); hyphen != std::string::npos) {
    return isPrefix(word.substr(0, hyphen + 1)) || isPrefix(word.substr(hyphen + 2));
  }
  // "MUDr.", "PhDr."
  if (word.ends_with("Dr.")) return true;
  const std::string plain = plainForm(word);
  if (isOneOf(plain,
              {"mr",   "mrs",  "ms",    "miss", "mx",   "dr",   "prof", "professor", "sir",
               "dame", "lord", "lady",  "rev",  "herr", "frau", "mme",  "mlle",      "monsieur",
               "sra",  "srta", "señor", "dra",  "dott", "dhr",  "shri", "señora",    "madame"})) {
    return true;
  }
  // These are also names, or parts of names, unless a dot marks them as abbreviations.
  return word.ends_with('.') &&
         isOneOf(plain, {"fr", "hon", "col", "gen", "lt", "maj", "sgt", "capt", "ing", "mag", "mgr",
                         "sr", "bc", "doc", "dipl"});
}

bool name_words::continuesPrefix(const std::string& word) {
  return isPrefix(word) || (word.ends_with('.') && word.front() >= 'a' && word.front() <= 'z');
}

bool name_words::isSuffix(const std::string& word) {
  if (isOneOf(word, {"II", "III", "IV", "B.A.", "M.A.", "B.S.", "M.S."})) return true;
  return isOneOf(plainForm(word), {"jr",  "jnr",   "junior", "júnior", "sr",  "snr", "senior",
                                   "phd", "dphil", "md",     "dds",    "esq", "mba", "cpa",
                                   "msc", "bsc",   "llm",    "rn",     "obe", "cbe", "mbe"});
}

bool name_words::isParticle(const std::string& word) {
  return isOneOf(
      lowercased(word),
      {"van",  "von", "der", "den",  "de",       "del",      "della", "di",  "da", "du",   "dos",
       "das",  "la",  "le",  "las",  "los",      "ter",      "ten",   "al",  "el", "bin",  "ibn",
       "bint", "abu", "ben", "st.",  "mac",      "mc",       "ó",     "ní",  "zu", "vom",  "zum",
       "zur",  "ua",  "'t",  "’t",   "بن",       "ابن",      "آل",    "أبو", "בן", "mhic", "nic",
       "uí",   "af",  "av",  "graf", "freiherr", "freifrau", "gräfin"});
}

bool name_words::isAnd(const std::string& word) { return isOneOf(word, {"y", "i", "e"}); }

bool name_words::isInSmallLetters(const std::string& word) {
  constexpr std::size_t longest = 3;
  return word.size() <= longest && word.front() >= 'a' && word.front() <= 'z';
}

bool name_words::isKatakana(const std::string& word) {
  return allCharacters(word, [](char32_t c) { return c >= 0x30A0 && c <= 0x30FF; });
}

bool name_words::isEastAsian(const std::string& word) {
  return allCharacters(word, [](char32_t c) {
    return c == U'々' || (c >= 0x3040 && c <= 0x30FF) || (c >= 0x3400 && c <= 0x9FFF) ||
           (c >= 0xAC00 && c <= 0xD7AF) || (c >= 0xF900 && c <= 0xFAFF) ||
           (c >= 0x20000 && c <= 0x3FFFF);
  });
}

}  // namespace quenlet
