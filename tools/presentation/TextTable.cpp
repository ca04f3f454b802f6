#include "tools/presentation/TextTable.h"

#include <algorithm>
#include <utility>

#include "tools/presentation/TerminalText.h"

namespace quenlet {
namespace {

using Cells = std::vector<std::string>;

// The width of each column; 0 for one without content.
std::vector<std::size_t> columnWidths(const std::vector<Cells>& rows) {
  std::vector<std::size_t> widths(rows.empty() ? 0 : rows.front().size());
  for (const Cells& row : rows) {
    for (std::size_t i = 0; i < widths.size(); ++i) {
      widths[i] = std::max(widths[i], countCharacters(row[i]));
    }
  }
  return widths;
}

std::string line(const Cells& cells, const std::vector<std::size_t>& widths) {
  std::string text;
  std::size_t blanks = 0;
  for (std::size_t i = 0; i < widths.size(); ++i) {
    if (widths[i] == 0) continue;
    // Written only before a cell with content: no line ends in blanks.
    if (!cells[i].empty()) text.append(std::exchange(blanks, 0), ' ').append(cells[i]);
    blanks += widths[i] - countCharacters(cells[i]) + 2;
  }
  return text;
}

}  // namespace

TextTable::TextTable(std::vector<std::string> columnHeadings)
    : headings(std::move(columnHeadings)) {}

void TextTable::addRow(std::vector<std::string> cells) {
  for (std::string& cell : cells) cell = printable(cell);
  rows.push_back(std::move(cells));
}

void TextTable::write(std::ostream& out, const std::string& indentation) const {
  std::vector<std::size_t> widths = columnWidths(rows);
  if (!headings.empty()) {
    for (std::size_t i = 0; i < widths.size(); ++i) {
      if (widths[i] > 0) widths[i] = std::max(widths[i], countCharacters(headings[i]));
    }
    out << indentation << line(headings, widths) << "\n";
  }
  for (const Cells& row : rows) out << indentation << line(row, widths) << "\n";
}

}  // namespace quenlet
