#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Character data of XML 1.0 documents in UTF-8. Pure functions.
namespace quenlet {

// How much of the front of `text` a document holds as it is. Stops at what has to be escaped and at
// what is forbidden.
[[nodiscard]] std::size_t lengthOfPlainPrefix(std::string_view text);

// Where the first byte stands that begins no character which a document may hold (bytes that are no
// UTF-8, control characters besides tab, LF and CR, U+FFFE, U+FFFF); npos when all may.
[[nodiscard]] std::size_t findForbiddenCharacter(std::string_view text);

// Appends `text` so that it reads back unchanged as the content of an element: markup characters
// become entities, CR a character reference, since a bare one reads as LF. Answers false, with a
// part of the text appended, when no document can hold it.
[[nodiscard]] bool appendEscapedXML(std::string& output, std::string_view text);

// Appends `content`, the content of an element, with its references replaced. Answers false, with a
// part of it appended, for entities other than XML's own five and references to no character.
[[nodiscard]] bool appendUnescapedXML(std::string& output, std::string_view content);

}  // namespace quenlet
