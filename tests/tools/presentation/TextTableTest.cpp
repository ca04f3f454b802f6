#include "tools/presentation/TextTable.h"

#include <gtest/gtest.h>

#include <sstream>

#include "platform/foundation/Text.h"
#include "tests/support/GoldenFile.h"

namespace quenlet {
namespace {

using Fit = TextTable::Fit;
using Column = TextTable::Column;
using TableRow = std::vector<std::string>;

std::string written(const std::vector<Column>& columns, const std::vector<TableRow>& rows,
                    const Screen& screen, const std::string& indentation = {}) {
  TextTable table(columns);
  for (const TableRow& row : rows) table.addRow(row);
  std::ostringstream out;
  table.write(out, screen, indentation);
  return out.str();
}

TEST(TextTableTest, FitsTheScreen) {
  const Column number("#", Fit::whole), value("VALUE"), from("FROM", Fit::cut);
  const Column expires("EXPIRES", Fit::whole), donation("DONATION", Fit::spare);
  const std::vector<TableRow> donations = {
      {"7", "Weg 12, 89073 Ulm, Germany", "org.example.mail", "mail:1", "2027-02-22"},
      {"12", "ann@example.org", "com.example", "example:23", ""}};
  const std::tuple<const char*, std::vector<Column>, std::vector<TableRow>, std::size_t> cases[] = {
      {"all of it", {number, value, from, donation, expires}, donations, 76},
      {"without the spare column", {number, value, from, donation, expires}, donations, 65},
      {"identifiers shrink first, then the widest",
       {number, value, from, donation, expires},
       donations,
       48},
      {"identifiers before longer values",
       {value, from},
       {{"Weg 12, 89073 Ulm, Germany", "org.example.address-book"}},
       46},
      {"whole columns shrink last", {number, value, expires}, {{"123", "ab", "2027-02-22"}}, 12},
      {"without headings", {}, {{"Preference", "enabled"}, {"", "x"}}, 16},
      {"nothing in a column", {number, value}, {{"", "a"}}, 80},
      {"wide and joining characters",
       {value, from},
       {{"東京都港区", "e\xCC\x81t\xC3\xA9"}, {"a", "한국"}},
       80},
      {"a wide character at the edge", {value}, {{"東京都港区"}}, 5},
      {"a column that a character does not fit into", {value}, {{"東a"}}, 1},
      {"cut through a joined character", {from}, {{"abcd東e\xCC\x81z"}}, 5},
      {"cut before a joining character", {from}, {{"abcde\xCC\x81z"}}, 4},
      {"words that just fit", {value}, {{"ab cd ef"}}, 5},
      {"an address", {value}, {{"robin.hartwell@workshop.example.org"}}, 20},
      {"an address without a mark in reach", {value}, {{"a@bcdefghijklmnopqrstuvwxyz"}}, 20},
  };
  GoldenParts tables("tests/tools/presentation/tables.txt");
  for (const auto& [name, columns, rows, width] : cases) {
    SCOPED_TRACE(name);
    const std::string text = written(columns, rows, {.width = width});
    EXPECT_EQ(text, tables.take(name));
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(displayWidth(line), width) << line;
  }
}

TEST(TextTableTest, ColoursHeadingsAndCellsButNeitherBlanksNorWhatNobodyReads) {
  const std::vector<Column> columns = {"VALUE", Column("FROM", Fit::cut, TextStyle::dim)};
  const std::vector<TableRow> rows = {{"a", "com.example"}, {"ab", ""}};
  EXPECT_EQ(written(columns, rows, {.width = 80, .isColoured = true}),
            "\x1B[1mVALUE\x1B[0m  \x1B[1mFROM\x1B[0m\n"
            "a      \x1B[2mcom.example\x1B[0m\n"
            "ab\n");
}

}  // namespace
}  // namespace quenlet
