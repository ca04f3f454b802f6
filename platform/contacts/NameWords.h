#pragma once

#include <string>

// What single words of a person's full name tell: the tables behind NameComponentsTokenizer. Pure
// functions; no word is empty.
namespace quenlet::name_words {

// "Dr.", "Mrs", "Univ.-Prof."; some only with a dot, because they are also names.
[[nodiscard]] bool isPrefix(const std::string& word);
// Whether a word continues a title: "Dr. med. h.c. mult.".
[[nodiscard]] bool continuesPrefix(const std::string& word);
// "Jr.", "PhD", "III".
[[nodiscard]] bool isSuffix(const std::string& word);
// "van", "de", "bin": stands before a family name and belongs to it.
[[nodiscard]] bool isParticle(const std::string& word);
// Joins two family names: "Ortega y Gasset".
[[nodiscard]] bool isAnd(const std::string& word);
// A short word in small letters: "op", "und".
[[nodiscard]] bool isInSmallLetters(const std::string& word);
[[nodiscard]] bool isKatakana(const std::string& word);
// Chinese characters, kana and Hangul.
[[nodiscard]] bool isEastAsian(const std::string& word);

}  // namespace quenlet::name_words
