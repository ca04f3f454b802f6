#include "platform/contacts/NameComponentsTokenizer.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "platform/contacts/NameWords.h"
#include "platform/foundation/Text.h"

// The nickname is cut out first, then the rest is split at its commas and into words:
//
//   Dr.     Anna   Maria   van der Berg ,  PhD
//   prefix  given  middle  family          suffix
//
// One word before the first comma, or particles and one, makes the form "Family, Given"; behind
// more words than that, a comma always begins a suffix. Then prefixes are taken off the
// front and suffixes off the back, but never the last word: "Major" or "Jr." alone stays a name. In
// a name without a comma the family name is at the end, or in front when it is written in Chinese,
// Japanese or Korean characters.
namespace quenlet {
namespace {

constexpr std::size_t mostBytesInName = 1000;

using namespace name_words;
using Words = std::vector<std::string>;

std::string joined(Words::const_iterator begin, Words::const_iterator end) {
  std::string text;
  for (; begin != end; ++begin) {
    if (!text.empty()) text += ' ';
    text += *begin;
  }
  return text;
}

std::optional<std::string> partUnlessEmpty(std::string text) {
  if (text.empty()) return std::nullopt;
  return text;
}

// Replaces the blanks of other scripts, and the dot between words in katakana, by spaces.
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

// Drops the address from "Anna Berg <anna@example.org>".
std::string_view withoutAddress(std::string_view text) {
  const std::size_t begin = text.find('<');
  return begin != text.npos && text.find('>', begin) != text.npos ? text.substr(0, begin) : text;
}

constexpr std::pair<std::string_view, std::string_view> quotes[] = {
    {"\"", "\""}, {"“", "”"}, {"„", "“"}, {"«", "»"}, {" '", "' "}, {" ‘", "’ "}};

// Drops quotes around the whole; `text` begins and ends with a blank.
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

// Cuts the first quoted text out of `name`.
std::optional<std::string> takeNickname(std::string& name) {
  for (const auto& [opening, closing] : quotes) {
    const std::size_t begin = name.find(opening);
    if (begin == std::string::npos) continue;
    const std::size_t inside = begin + opening.size();
    const std::size_t end = name.find(closing, inside);
    if (end == std::string::npos) continue;
    std::string nickname(trimmed(std::string_view(name).substr(inside, end - inside)));
    name.replace(begin, end + closing.size() - begin, " ");
    return partUnlessEmpty(std::move(nickname));
  }
  return std::nullopt;
}

// Cuts a text in brackets out of `name`. It is the nickname if there is none yet and the name goes
// on at both sides ("Ann (Annie) Lee"), else a remark ("Ann Lee (Sales)"). False without brackets.
bool takeBracketed(std::string& name, std::optional<std::string>& nickname) {
  const std::size_t begin = name.find('(');
  const std::size_t end = begin == std::string::npos ? begin : name.find(')', begin);
  if (end == std::string::npos) return false;
  const std::string_view text = name;
  const bool isInside =
      !trimmed(text.substr(0, begin)).empty() && !trimmed(text.substr(end + 1)).empty();
  std::string inside(trimmed(text.substr(begin + 1, end - begin - 1)));
  if (isInside && !nickname) nickname = partUnlessEmpty(std::move(inside));
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

// A name that is being split into its components.
class Parts final {
 public:
  Words prefixes;
  Words family;  // empty when the name has no comma
  Words given;   // the whole name when it has no comma
  Words suffixes;

  void add(Words part) {
    if (part.empty()) return;
    if (given.empty()) {
      given = std::move(part);
    } else if (std::all_of(part.begin(), part.end(), isPrefix)) {
      prefixes.insert(prefixes.end(), part.begin(), part.end());
    } else if (family.empty() && isFamilyAlone(given) &&
               !std::all_of(part.begin(), part.end(), isSuffix)) {
      family = std::exchange(given, std::move(part));
    } else {
      suffixes.insert(suffixes.end(), part.begin(), part.end());
    }
  }

  void setAsideHonorifics(Words& words) {
    if (isPrefix(words.front())) {
      const auto firstName = std::find_if_not(words.begin(), words.end() - 1, continuesPrefix);
      prefixes.insert(prefixes.end(), words.begin(), firstName);
      words.erase(words.begin(), firstName);
    }
    const auto lastName = std::find_if_not(words.rbegin(), words.rend() - 1, isSuffix).base();
    suffixes.insert(suffixes.begin(), lastName, words.end());
    words.erase(lastName, words.end());
  }

  // Whether the words before a comma are a family name: one word, or particles and one.
  static bool isFamilyAlone(Words words) {
    Parts honorifics;
    honorifics.setAsideHonorifics(words);
    return std::all_of(words.begin(), words.end() - 1, isParticle);
  }

  // "Gogh, Vincent van": the particle belongs to the family name.
  void moveTrailingParticles() {
    const auto particles = std::find_if_not(given.rbegin(), given.rend() - 1, isParticle).base();
    family.insert(family.begin(), particles, given.end());
    given.erase(particles, given.end());
  }

  void splitFamily() {
    if (given.size() == 1 && prefixes.empty()) return;
    auto begin = given.begin();
    auto end = given.begin() + 1;
    if (!hasFamilyInFront()) {
      begin = beginOfFamilyAtEnd();
      end = given.end();
    }
    family.assign(begin, end);
    given.erase(begin, end);
  }

 private:
  // Foreign names, spelled in katakana by their sound, keep their own order.
  [[nodiscard]] bool hasFamilyInFront() const {
    return given.size() > 1 && std::all_of(given.begin(), given.end(), isEastAsian) &&
           !std::all_of(given.begin(), given.end(), isKatakana);
  }

  // The last word with the particles before it; two words when an "and" joins them ("Ortega y
  // Gasset").
  [[nodiscard]] Words::iterator beginOfFamilyAtEnd() {
    // In a name written entirely in small letters they say nothing.
    const bool smallLettersTell = given.back().front() < 'a' || given.back().front() > 'z';
    auto start = given.end() - 1;
    if (start - given.begin() >= 3 && isAnd(*(start - 1))) start -= 2;
    while (start - given.begin() > 1 &&
           (isParticle(*(start - 1)) || (smallLettersTell && isInSmallLetters(*(start - 1)))))
      --start;
    return start;
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
    components.givenName = partUnlessEmpty(std::string(trimmed(fullName)));
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
    parts.splitFamily();
  } else {
    parts.setAsideHonorifics(parts.family);
    parts.moveTrailingParticles();
  }
  const auto middle = parts.given.begin() + (parts.given.empty() ? 0 : 1);
  components.namePrefix = partUnlessEmpty(joined(parts.prefixes.begin(), parts.prefixes.end()));
  components.givenName = partUnlessEmpty(joined(parts.given.begin(), middle));
  components.middleName = partUnlessEmpty(joined(middle, parts.given.end()));
  components.familyName = partUnlessEmpty(joined(parts.family.begin(), parts.family.end()));
  components.nameSuffix = partUnlessEmpty(joined(parts.suffixes.begin(), parts.suffixes.end()));
  return components;
}

}  // namespace quenlet
