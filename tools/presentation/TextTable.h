#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "tools/presentation/Screen.h"

namespace quenlet {

// A table with columns as wide as their widest cell, as far as the screen is wide enough. Columns
// whose cells are all empty are left out. Cells are made safe for a terminal. One thread at a time.
//
// A table that is too wide first loses its spare columns, from the right. Then its cut columns
// become narrower, then the wrapped ones as well, the widest first; whole ones only when all others
// are as narrow as can be.
class TextTable final {
 public:
  enum class Fit {
    whole,    // numbers, dates: of no use when in pieces
    wrapped,  // goes on in further lines
    cut,      // loses its middle
    spare,    // whole, or not at all
  };

  struct Column final {
    // Implicit: most columns are just a heading.
    Column(const char* text, Fit narrowed = Fit::wrapped, TextStyle look = TextStyle::plain)
        : heading(text), fit(narrowed), style(look) {}

    std::string heading;
    Fit fit;
    // How the cells look; headings are bold.
    TextStyle style;
  };

  // Without columns all cells are wrapped, and headings are left out.
  explicit TextTable(std::vector<Column> tableColumns = {});

  // Every row must have the same number of cells.
  void addRow(std::vector<std::string> cells);
  // A row that is neither wrapped nor cut, and leaves the columns as wide as the others make them:
  // for commands, which could not be copied in pieces.
  void addWholeRow(std::vector<std::string> cells);
  [[nodiscard]] bool empty() const { return rows.empty(); }
  // Writes the headings, if any is not empty, and the rows, each line after `indentation`.
  void write(std::ostream& out, const Screen& screen = {},
             const std::string& indentation = {}) const;

 private:
  struct Row final {
    std::vector<std::string> cells;
    bool isWhole = false;
  };

  // The width of each column; 0 for one whose cells are all empty.
  [[nodiscard]] std::vector<std::size_t> naturalWidths(const std::vector<Column>& shown) const;

  std::vector<Column> columns;
  std::vector<Row> rows;
};

}  // namespace quenlet
