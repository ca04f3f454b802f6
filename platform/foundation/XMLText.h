#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Character data of XML 1.0 documents in UTF-8. Pure functions.
namespace quenlet {

// The length of the prefix of `text` that a document can hold as it is: up to the first character
// that must be escaped or is forbidden.
[[nodiscard]] std::size_t lengthOfPlainPrefix(std::string_view text);

// The position of the first character that a document must not hold (invalid UTF-8, control
// characters other than tab, LF and CR, U+FFFE, U+FFFF), or npos.
[[nodiscard]] std::size_t findForbiddenCharacter(std::string_view text);

// Appends `text` as the content of an element, so that it reads back unchanged: markup characters
// become entities, and CR a character reference, since a bare one reads as LF. False, with part of
// the text appended, when a document cannot hold it.
[[nodiscard]] bool appendEscapedXML(std::string& output, std::string_view text);

// Appends `content`, the content of an element, with its references replaced. False, with part of
// it appended, for entities other than XML's own five and for references that name no character.
[[nodiscard]] bool appendUnescapedXML(std::string& output, std::string_view content);

}  // namespace quenlet
