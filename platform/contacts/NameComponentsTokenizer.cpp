#include "platform/contacts/NameComponentsTokenizer.h"

#include <algorithm>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "platform/foundation/Text.h"

// A name is first cut into words. The nickname is taken out, then the rest falls into parts at its
// commas: a part of suffixes or prefixes alone ("PhD") is set aside, the first other part after a
// comma makes the name "Family, Given". What remains loses its prefixes at the front and its
// suffixes at the back, always down to one word at least, so that "Major" or "Jr." alone stays a
// name. A name without a comma then has its family name in front when it is written in a way that
// says so: in Chinese, Japanese or Korean characters, or in capitals ("DUPONT Jean"); else at the
// end.
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
  // "Dr.-Ing." is one word of two titles.
  if (const std::size_t hyphen = word.find(".-"); hyphen != std::string::npos) {
    const std::string rest = word.substr(hyphen + 2);
    return isPrefix(word.substr(0, hyphen + 1)) &&
           isPrefix(rest.ends_with('.') ? rest : rest + ".");
  }
  const std::string plain = plainForm(word);
  if (isOneOf(plain, {"mr",        "mrs",  "ms",      "miss",  "mx",    "dr",     "prof",
                      "professor", "sir",  "rev",     "herr",  "frau",  "mme",    "mlle",
                      "sra",       "srta", "capt",    "lady",  "señor", "señora", "pfarrer",
                      "dipl-ing",  "dott", "dottssa", "dra",   "lord",  "profa",  "sigra",
                      "dhr",       "mevr", "shri",    "smt",   "mudr",  "judr",   "rndr",
                      "phdr",      "mvdr", "mgr",     "rabbi", "dame",  "madame", "monsieur"})) {
    return true;
  }
  // Names or words of names as well, unless shortened with a dot.
  return word.ends_with('.') &&
         isOneOf(plain, {"fr",   "hon",  "col",   "gen",  "lt",   "maj", "sgt",  "ing",  "sr",
                         "med",  "rer",  "nat",   "jur",  "phil", "sig", "mag",  "doc",  "hc",
                         "mult", "dent", "univ",  "dipl", "priv", "doz", "vet",  "bc",   "habil",
                         "oec",  "pol",  "theol", "kfm",  "kffr", "inf", "phys", "psych"});
}

bool isSuffix(const std::string& word) {
  if (isOneOf(word, {"II", "III", "IV", "VI", "VII", "VIII", "IX"})) return true;
  const std::string plain = plainForm(word);
  // Two letters that are initials or a name as well, but for their dots.
  if (word.size() == 4 && word[1] == '.' && word[3] == '.' && isOneOf(plain, {"ba", "ma", "bs"})) {
    return true;
  }
  return isOneOf(
      plain, {"jr",    "jnr", "junior",  "júnior", "sr",  "snr",  "senior", "phd",  "md",   "dds",
              "dphil", "esq", "esquire", "mba",    "cpa", "msc",  "bsc",    "meng", "beng", "llm",
              "llb",   "obe", "mbe",     "cbe",    "csc", "drsc", "mphil",  "mfa",  "rn"});
}

// After a comma also what would be a name elsewhere.
bool isSuffixAfterComma(const std::string& word) {
  return isSuffix(word) || word == "V" ||
         isOneOf(plainForm(word), {"ma", "ba", "bs", "ms", "jd", "do", "dd", "pe", "cfa", "mph",
                                   "edd", "pmp", "ceng", "cissp", "frcs", "lld", "dis", "thd"});
}

bool isParticle(const std::string& word) {
  return isOneOf(word, {"van", "von",  "der", "den", "de",  "del", "della", "di",  "da",  "du",
                        "la",  "le",   "las", "los", "des", "dos", "das",   "do",  "ter", "ten",
                        "te",  "tot",  "zu",  "zum", "zur", "vom", "af",    "av",  "bin", "binti",
                        "ibn", "bint", "al",  "el",  "ben", "abu", "und",   "'t",  "’t",  "'s",
                        "’s",  "in",   "op",  "aan", "uit", "auf", "aus",   "dem", "an",  "na",
                        "بن",  "ابن",  "آل",  "أبو", "בן"}) ||
         isOneOf(word,
                 {"Van",  "Von", "De",  "Del", "Della",    "Di",       "Da",   "Du",    "Der",
                  "Den",  "Dos", "Ter", "Ten", "Al",       "El",       "Bin",  "Ibn",   "La",
                  "Le",   "St.", "Abu", "Mac", "Mc",       "Ó",        "Ní",   "Das",   "Mhac",
                  "Mhic", "Ua",  "Nic", "Uí",  "Freiherr", "Freifrau", "Graf", "Gräfin"});
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

bool isKatakana(const std::string& word) {
  return allCharacters(word, [](char32_t c) { return c >= 0x30A0 && c <= 0x30FF; });
}

// Chinese characters, kana and Hangul.
bool isEastAsian(const std::string& word) {
  return allCharacters(word, [](char32_t c) {
    return c == U'々' || (c >= 0x3040 && c <= 0x30FF) || (c >= 0x3400 && c <= 0x9FFF) ||
           (c >= 0xAC00 && c <= 0xD7AF) || (c >= 0xF900 && c <= 0xFAFF) ||
           (c >= 0x20000 && c <= 0x3FFFF);
  });
}

// Two letters are initials ("JR"), unless they can be spoken ("LI") or are a particle ("LE").
bool isInCapitals(const std::string& word) {
  constexpr std::u32string_view vowels = U"aeiouyü";
  std::u32string letters;
  const bool onlyCapitals = allCharacters(word, [&letters](char32_t c) {
    if (c == '-' || c == '\'' || c == U'’') return true;
    std::string letter;
    appendCharacter(letter, c);
    const std::string lower = lowercased(letter);
    std::string_view rest = lower;
    letters += takeCharacter(rest).value_or(c);
    return lower != letter;
  });
  if (!onlyCapitals || letters.size() < 2) return false;
  const auto isVowel = [&](char32_t c) { return vowels.find(c) != vowels.npos; };
  return letters.size() > 2 || isParticle(lowercased(word)) ||
         (!isVowel(letters[0]) && isVowel(letters[1]));
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

// Replaces every blank of another script, and the dot between words in katakana, by a space.
std::string withPlainBlanks(std::string_view text) {
  std::string plain(text);
  for (const std::string_view blank : {"\u00A0", "\u2009", "\u202F", "\u3000", "\u30FB"}) {
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

// Without the address of "Anna Berg <anna@example.org>".
std::string_view withoutAddress(std::string_view text) {
  const std::size_t begin = text.find('<');
  return begin != text.npos && text.find('>', begin) != text.npos ? text.substr(0, begin) : text;
}

constexpr std::pair<std::string_view, std::string_view> quotes[] = {
    {"\"", "\""}, {"“", "”"}, {"„", "“"}, {"«", "»"}, {" '", "' "}, {" ‘", "’ "}};

// Without quotes around the whole; `text` begins and ends with a blank.
std::string_view withoutQuotes(std::string_view text) {
  for (const auto& [opening, closing] : quotes) {
    const std::string_view whole = opening.front() == ' ' ? text : trimmed(text);
    if (whole.size() < opening.size() + closing.size() || !whole.starts_with(opening)) continue;
    const std::string_view inside = whole.substr(opening.size());
    if (inside.find(closing) + closing.size() != inside.size()) continue;
    return inside.substr(0, inside.size() - closing.size());
  }
  return text;
}

// Cuts the first text in quotes out of `name`.
std::optional<std::string> takeNickname(std::string& name) {
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

// Cuts what stands in brackets out of `name`: a nickname, unless there is one already or nothing of
// the name stands behind it, else a remark ("Ann Lee (Sales)"). Answers whether there were
// brackets.
bool takeBracketed(std::string& name, std::optional<std::string>& nickname) {
  const std::size_t begin = name.find('(');
  const std::size_t end = begin == std::string::npos ? begin : name.find(')', begin);
  if (end == std::string::npos) return false;
  const std::string_view text = name;
  const bool isInside =
      !trimmed(text.substr(0, begin)).empty() && !trimmed(text.substr(end + 1)).empty();
  std::string inside(trimmed(text.substr(begin + 1, end - begin - 1)));
  if (isInside && !nickname) nickname = presentUnlessEmpty(std::move(inside));
  name.replace(begin, end + 1 - begin, " ");
  return true;
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
    } else if (!first && std::all_of(part.begin(), part.end(), isPrefix)) {
      prefixes.insert(prefixes.end(), part.begin(), part.end());
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

  // Cuts the family name off the front of the name, if it is to be seen that it stands there.
  [[nodiscard]] bool splitLeadingFamily() {
    if (given.size() < 2) return false;
    auto end = given.begin();
    if (std::all_of(given.begin(), given.end(), isEastAsian)) {
      // Names from elsewhere, written by their sound, keep their order.
      if (!std::all_of(given.begin(), given.end(), isKatakana)) ++end;
    } else if (!isInCapitals(given.back())) {
      end = std::find_if_not(given.begin(), given.end() - 1, isInCapitals);
    }
    family.assign(given.begin(), end);
    given.erase(given.begin(), end);
    return !family.empty();
  }

  // Cuts the family name off the end of the name, with its particles and an "and" between two.
  void splitFamily() {
    if (given.size() == 1 && prefixes.empty()) return;
    std::size_t start = given.size() - 1;
    if (start >= 3 && isOneOf(given[start - 1], {"y", "i", "e"})) start -= 2;
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
  const std::string spaced =
      " " + std::string(trimmed(withPlainBlanks(withoutAddress(fullName)))) + " ";
  std::string name = " " + std::string(trimmed(withoutQuotes(spaced))) + " ";
  if (name.find('@') != std::string::npos) return components;
  components.nickname = takeNickname(name);
  while (takeBracketed(name, components.nickname)) {
  }
  Parts parts = partsOf(name);
  if (parts.given.empty()) return components;
  parts.setAsideHonorifics(parts.given);
  if (parts.family.empty()) {
    if (!parts.splitLeadingFamily()) parts.splitFamily();
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
