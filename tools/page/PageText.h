#pragma once

#include <string>
#include <string_view>

#include "tools/page/HTMLWriter.h"
#include "tools/page/PageContent.h"
#include "tools/presentation/Wording.h"

// Pieces that several sections of the page write. No state beside the output.
namespace quenlet {

// The most rows that a list shows: nobody reads more.
inline constexpr std::size_t mostRows = 500;

// "November 2026" for "2026-11".
[[nodiscard]] std::string monthText(const std::string& month);

// A text from outside, isolated from the writing direction around it and cut if it is too long to
// read.
void writeForeign(HTMLWriter& html, std::string_view text);
// "26 November 2026", in UTC.
void writeDay(HTMLWriter& html, Date date);
// "until 26 November 2026"; nothing for what never expires.
void writeUntil(HTMLWriter& html, Date expires);
// The heading row of a table.
void writeHeadings(HTMLWriter& html, std::initializer_list<std::string_view> headings);
// Says how many rows a list leaves out, and where they are; nothing when it has all.
void writeOmission(HTMLWriter& html, std::size_t allRows, std::string_view command);

}  // namespace quenlet
