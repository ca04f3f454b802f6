#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace quenlet {

// A table with columns as wide as their widest cell. Columns whose cells are all empty are left
// out. Cells are made safe for a terminal. One thread at a time.
class TextTable final {
 public:
  // With a heading for each column, or without headings.
  explicit TextTable(std::vector<std::string> columnHeadings = {});

  // Every row must have the same number of cells.
  void addRow(std::vector<std::string> cells);
  [[nodiscard]] bool empty() const { return rows.empty(); }
  // Writes the headings, if any, and the rows, each after `indentation`.
  void write(std::ostream& out, const std::string& indentation = {}) const;

 private:
  std::vector<std::string> headings;
  std::vector<std::vector<std::string>> rows;
};

}  // namespace quenlet
