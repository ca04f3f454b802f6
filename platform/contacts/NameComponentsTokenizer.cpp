#include "platform/contacts/NameComponentsTokenizer.h"

#include <algorithm>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "platform/foundation/Text.h"

// A name is first cut into words. The nickname is taken out, then the rest falls into parts at its
// commas: a part of suffixes alone ("PhD") is set aside, the first other part after a comma makes
// the name "Family, Given". What remains loses its prefixes at the front and its suffixes at the
// back, always down to one word at least, so that "Major" or "Jr." alone stays a name.
namespace quenlet {
namespace {

constexpr std::size_t mostBytesInName = 1000;

using Words = std::vector<std::string>;

bool isOneOf(std::string_view word, std::initializer_list<std::string_view> table) {
  return std::find(table.begin(), table.end(), word) != table.end();
}

// Lower-cased and without dots: "Ph.D." is "phd".
std::string plainForm(const std::string& word) {
  std::string plain = lowercased(word);
  std::erase(plain, '.');
  return plain;
}

bool isPrefix(const std::string& word) {
  const std::string plain = plainForm(word);
  if (isOneOf(plain, {"mr",   "mrs", "ms",      "miss",  "mx",     "dr",   "prof", "professor",
                      "sir",  "rev", "herr",    "frau",  "mme",    "mlle", "sra",  "srta",
                      "capt", "mag", "pfarrer", "señor", "señora", "dott", "doc",  "dipl-ing"})) {
    return true;
  }
  // Names as well unless shortened with a dot.
  return word.ends_with('.') && isOneOf(plain, {"fr", "hon", "col", "gen", "lt", "maj", "sgt",
                                                "ing", "sr", "med", "rer", "nat", "jur", "phil"});
}

bool isSuffix(const std::string& word) {
  if (isOneOf(word, {"II", "III", "IV", "VI", "VII", "VIII", "IX"})) return true;
  return isOneOf(plainForm(word), {"jr",    "jnr", "junior", "sr",  "snr",     "senior", "phd",
                                   "dphil", "md",  "dds",    "esq", "esquire", "mba",    "cpa",
                                   "msc",   "bsc", "llm",    "obe", "mbe",     "cbe",    "rn"});
}

// After a comma also what would be a name elsewhere.
bool isSuffixAfterComma(const std::string& word) {
  return isSuffix(word) || word == "V" ||
         isOneOf(plainForm(word), {"ma", "ba", "jd", "do", "dd", "pe"});
}

bool isParticle(const std::string& word) {
  return isOneOf(word, {"van", "von", "der",   "den", "de",   "del", "della", "di",  "da",
                        "du",  "la",  "le",    "las", "los",  "des", "dos",   "das", "do",
                        "ter", "ten", "te",    "tot", "zu",   "zum", "zur",   "vom", "af",
                        "av",  "bin", "binti", "ibn", "bint", "al",  "el",    "ben", "abu"}) ||
         isOneOf(word, {"Van", "Von", "De", "Del", "Della", "Di", "Da", "Du", "Der", "Den", "Dos",
                        "Ter", "Ten", "Al", "El", "Bin", "Ibn", "La", "St."});
}

std::string joined(Words::const_iterator begin, Words::const_iterator end) {
  std::string text;
  for (; begin != end; ++begin) {
    if (!text.empty()) text += ' ';
    text += *begin;
  }
  return text;
}

std::optional<std::string> presentUnlessEmpty(std::string text) {
  if (text.empty()) return std::nullopt;
  return text;
}

// Replaces every blank of another script by a space.
std::string withPlainBlanks(std::string_view text) {
  std::string plain(text);
  for (const std::string_view blank : {"\u00A0", "\u2009", "\u202F", "\u3000"}) {
    std::string replaced;
    std::string_view rest = plain;
    for (std::size_t at = rest.find(blank); at != rest.npos; at = rest.find(blank)) {
      replaced.append(rest.substr(0, at)) += ' ';
      rest.remove_prefix(at + blank.size());
    }
    replaced += rest;
    plain = std::move(replaced);
  }
  return plain;
}

// Cuts the first text in quotes out of `name`.
std::optional<std::string> takeNickname(std::string& name) {
  constexpr std::pair<std::string_view, std::string_view> quotes[] = {
      {"\"", "\""}, {"“", "”"}, {"„", "“"}, {"«", "»"}, {" '", "' "}, {" ‘", "’ "}};
  for (const auto& [opening, closing] : quotes) {
    const std::size_t begin = name.find(opening);
    if (begin == std::string::npos) continue;
    const std::size_t inside = begin + opening.size();
    const std::size_t end = name.find(closing, inside);
    if (end == std::string::npos) continue;
    std::string nickname(trimmed(std::string_view(name).substr(inside, end - inside)));
    name.replace(begin, end + closing.size() - begin, " ");
    return presentUnlessEmpty(std::move(nickname));
  }
  return std::nullopt;
}

Words wordsOf(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  Words words;
  std::size_t begin = text.find_first_not_of(blanks);
  while (begin != std::string_view::npos) {
    const std::size_t end = std::min(text.find_first_of(blanks, begin), text.size());
    words.emplace_back(text.substr(begin, end - begin));
    begin = text.find_first_not_of(blanks, end);
  }
  return words;
}

// One name on its way to its components.
struct Parts final {
  Words prefixes;
  Words family;  // empty when the name has no comma
  Words given;   // the whole name when it has no comma
  Words suffixes;

  void add(Words part) {
    if (part.empty()) return;
    const bool first = given.empty();
    if (!first && std::all_of(part.begin(), part.end(), isSuffixAfterComma)) {
      suffixes.insert(suffixes.end(), part.begin(), part.end());
    } else if (!first && family.empty()) {
      family = std::exchange(given, std::move(part));
    } else {
      given.insert(given.end(), part.begin(), part.end());
    }
  }

  void setAsideHonorifics(Words& words) {
    const auto firstName = std::find_if_not(words.begin(), words.end() - 1, isPrefix);
    prefixes.insert(prefixes.end(), words.begin(), firstName);
    words.erase(words.begin(), firstName);
    const auto lastName = std::find_if_not(words.rbegin(), words.rend() - 1, isSuffix).base();
    suffixes.insert(suffixes.begin(), lastName, words.end());
    words.erase(lastName, words.end());
  }

  // "Gogh, Vincent van": the particle belongs to the family name.
  void moveTrailingParticles() {
    const auto particles = std::find_if_not(given.rbegin(), given.rend() - 1, isParticle).base();
    family.insert(family.begin(), particles, given.end());
    given.erase(particles, given.end());
  }

  // Cuts the family name off the end of the name, with its particles and a "y" between two.
  void splitFamily() {
    if (given.size() == 1 && prefixes.empty()) return;
    std::size_t start = given.size() - 1;
    if (start >= 3 && given[start - 1] == "y") start -= 2;
    while (start > 1 && isParticle(given[start - 1])) --start;
    family.assign(given.begin() + static_cast<std::ptrdiff_t>(start), given.end());
    given.resize(start);
  }
};

Parts partsOf(std::string_view name) {
  Parts parts;
  while (true) {
    const std::size_t comma = name.find(',');
    parts.add(wordsOf(name.substr(0, comma)));
    if (comma == std::string_view::npos) return parts;
    name.remove_prefix(comma + 1);
  }
}

}  // namespace

PersonNameComponents NameComponentsTokenizer::componentsFromString(std::string_view fullName) {
  PersonNameComponents components;
  if (fullName.size() > mostBytesInName) {
    components.givenName = presentUnlessEmpty(std::string(trimmed(fullName)));
    return components;
  }
  std::string name = " " + withPlainBlanks(fullName) + " ";
  components.nickname = takeNickname(name);
  Parts parts = partsOf(name);
  if (parts.given.empty()) return components;
  parts.setAsideHonorifics(parts.given);
  if (parts.family.empty()) {
    parts.splitFamily();
  } else {
    parts.setAsideHonorifics(parts.family);
    parts.moveTrailingParticles();
  }
  const auto middle = parts.given.begin() + (parts.given.empty() ? 0 : 1);
  components.namePrefix = presentUnlessEmpty(joined(parts.prefixes.begin(), parts.prefixes.end()));
  components.givenName = presentUnlessEmpty(joined(parts.given.begin(), middle));
  components.middleName = presentUnlessEmpty(joined(middle, parts.given.end()));
  components.familyName = presentUnlessEmpty(joined(parts.family.begin(), parts.family.end()));
  components.nameSuffix = presentUnlessEmpty(joined(parts.suffixes.begin(), parts.suffixes.end()));
  return components;
}

}  // namespace quenlet
