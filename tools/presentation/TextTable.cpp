#include "tools/presentation/TextTable.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "platform/foundation/Text.h"
#include "tools/presentation/TerminalText.h"

namespace quenlet {
namespace {

using Cells = std::vector<std::string>;
using Columns = std::vector<TextTable::Column>;
using Fit = TextTable::Fit;
// The width of each column; 0 leaves it out.
using Widths = std::vector<std::size_t>;

constexpr std::size_t gap = 2;

std::size_t totalWidth(const Widths& widths) {
  const auto shown = static_cast<std::size_t>(
      std::count_if(widths.begin(), widths.end(), [](std::size_t width) { return width > 0; }));
  return std::accumulate(widths.begin(), widths.end(), gap * (std::max<std::size_t>(shown, 1) - 1));
}

// Leaves spare columns out, from the right, until the table fits.
void dropSpareColumns(const Columns& columns, Widths& widths, std::size_t room) {
  for (std::size_t i = columns.size(); i-- > 0 && totalWidth(widths) > room;) {
    if (columns[i].fit == Fit::spare) widths[i] = 0;
  }
}

// Takes columns off the widest of those that `mayShrink` and are wider than `least`.
template <typename Predicate>
void shrink(Widths& widths, std::size_t room, std::size_t least, Predicate mayShrink) {
  for (std::size_t total = totalWidth(widths); total > room; --total) {
    std::size_t widest = widths.size();
    std::size_t width = least;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      if (widths[i] > width && mayShrink(i)) {
        widest = i;
        width = widths[i];
      }
    }
    if (widest == widths.size()) return;
    --widths[widest];
  }
}

Widths fittingWidths(const Columns& columns, Widths widths, std::size_t room) {
  // Narrower ones are hardly readable.
  constexpr std::size_t leastOfCut = 16;
  constexpr std::size_t leastOfWrapped = 8;
  const auto isCut = [&](std::size_t i) { return columns[i].fit == Fit::cut; };
  const auto isNarrowed = [&](std::size_t i) { return isCut(i) || columns[i].fit == Fit::wrapped; };
  dropSpareColumns(columns, widths, room);
  shrink(widths, room, leastOfCut, isCut);
  shrink(widths, room, leastOfWrapped, isNarrowed);
  shrink(widths, room, 1, isNarrowed);
  shrink(widths, room, 1, [](std::size_t) { return true; });
  return widths;
}

// The lines of a cell in a column of that width.
std::vector<std::string> linesOf(const std::string& cell, Fit fit, std::size_t width) {
  return fit == Fit::wrapped ? wrapped(cell, width)
                             : std::vector<std::string>{shortened(cell, width)};
}

// Writes the lines that a row takes.
class RowWriter final {
 public:
  RowWriter(std::ostream& stream, const Screen& outputScreen, const std::string& blanks,
            Widths columnWidths)
      : out(stream), screen(outputScreen), indentation(blanks), widths(std::move(columnWidths)) {}

  void writeWhole(const Cells& row, const Columns& columns) const {
    out << indentation << lineOf(row, columns) << "\n";
  }

  void write(const Cells& row, const Columns& columns) const {
    std::vector<std::vector<std::string>> cells(row.size());
    std::size_t height = 0;
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (widths[i] > 0) cells[i] = linesOf(row[i], columns[i].fit, widths[i]);
      height = std::max(height, cells[i].size());
    }
    for (std::size_t number = 0; number < height; ++number) {
      Cells line;
      for (auto& cell : cells) line.push_back(number < cell.size() ? std::move(cell[number]) : "");
      out << indentation << lineOf(line, columns) << "\n";
    }
  }

 private:
  [[nodiscard]] std::string lineOf(const Cells& cells, const Columns& columns) const {
    std::string line;
    std::size_t blanks = 0;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      if (widths[i] == 0) continue;
      // Written only before a cell with content: no line ends in blanks.
      if (!cells[i].empty()) {
        line.append(std::exchange(blanks, 0), ' ');
        line.append(screen.styled(cells[i], columns[i].style));
      }
      blanks += widths[i] - std::min(widths[i], displayWidth(cells[i])) + gap;
    }
    return line;
  }

  std::ostream& out;
  const Screen& screen;
  const std::string& indentation;
  const Widths widths;
};

}  // namespace

TextTable::TextTable(std::vector<Column> tableColumns) : columns(std::move(tableColumns)) {}

void TextTable::addRow(std::vector<std::string> cells) {
  for (std::string& cell : cells) cell = printable(cell);
  rows.push_back({std::move(cells)});
}

void TextTable::addWholeRow(std::vector<std::string> cells) {
  addRow(std::move(cells));
  rows.back().isWhole = true;
}

std::vector<std::size_t> TextTable::naturalWidths(const std::vector<Column>& shown) const {
  Widths widths(shown.size());
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < widths.size(); ++i) {
      const std::size_t width = displayWidth(row.cells[i]);
      widths[i] = std::max(widths[i], row.isWhole ? std::min<std::size_t>(width, 1) : width);
    }
  }
  for (std::size_t i = 0; i < widths.size(); ++i) {
    if (widths[i] > 0) widths[i] = std::max(widths[i], displayWidth(shown[i].heading));
  }
  return widths;
}

void TextTable::write(std::ostream& out, const Screen& screen,
                      const std::string& indentation) const {
  if (rows.empty()) return;
  Columns shown = columns;
  shown.resize(rows.front().cells.size(), "");
  const RowWriter writer(
      out, screen, indentation,
      fittingWidths(shown, naturalWidths(shown), screen.roomBehind(indentation.size())));
  Cells headings;
  for (const Column& column : shown) headings.push_back(column.heading);
  if (std::any_of(headings.begin(), headings.end(), [](auto& text) { return !text.empty(); })) {
    writer.write(headings, Columns(shown.size(), Column("", Fit::cut, TextStyle::bold)));
  }
  for (const Row& row : rows) {
    row.isWhole ? writer.writeWhole(row.cells, shown) : writer.write(row.cells, shown);
  }
}

}  // namespace quenlet
