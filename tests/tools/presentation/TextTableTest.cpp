#include "tools/presentation/TextTable.h"

#include <gtest/gtest.h>

#include <sstream>

#include "platform/foundation/Text.h"

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
  const std::tuple<const char*, std::vector<Column>, std::vector<TableRow>, std::size_t,
                   const char*>
      cases[] = {
          {"all of it",
           {number, value, from, donation, expires},
           donations,
           76,
           "#   VALUE                       FROM              DONATION    EXPIRES\n"
           "7   Weg 12, 89073 Ulm, Germany  org.example.mail  mail:1      2027-02-22\n"
           "12  ann@example.org             com.example       example:23\n"},
          {"without the spare column",
           {number, value, from, donation, expires},
           donations,
           65,
           "#   VALUE                       FROM              EXPIRES\n"
           "7   Weg 12, 89073 Ulm, Germany  org.example.mail  2027-02-22\n"
           "12  ann@example.org             com.example\n"},
          {"identifiers shrink first, then the widest",
           {number, value, from, donation, expires},
           donations,
           48,
           "#   VALUE            FROM             EXPIRES\n"
           "7   Weg 12, 89073    org.exa…le.mail  2027-02-22\n"
           "    Ulm, Germany\n"
           "12  ann@example.org  com.example\n"},
          {"identifiers before longer values",
           {value, from},
           {{"Weg 12, 89073 Ulm, Germany", "org.example.address-book"}},
           46,
           "VALUE                       FROM\n"
           "Weg 12, 89073 Ulm, Germany  org.examp…ess-book\n"},
          {"whole columns shrink last",
           {number, value, expires},
           {{"123", "ab", "2027-02-22"}},
           12,
           "#    …  EX…S\n"
           "123  a  20…2\n"
           "     b\n"},
          {"without headings",
           {},
           {{"Preference", "enabled"}, {"", "x"}},
           16,
           "Prefere  enabled\n"
           "nce\n"
           "         x\n"},
          {"nothing in a column", {number, value}, {{"", "a"}}, 80, "VALUE\na\n"},
          {"wide and joining characters",
           {value, from},
           {{"東京都港区", "e\xCC\x81t\xC3\xA9"}, {"a", "한국"}},
           80,
           "VALUE       FROM\n"
           "東京都港区  e\xCC\x81t\xC3\xA9\n"
           "a           한국\n"},
          {"a wide character at the edge", {value}, {{"東京都港区"}}, 5, "VALUE\n東京\n都港\n区\n"},
          {"a column that a character does not fit into", {value}, {{"東a"}}, 1, "…\n…\na\n"},
          {"cut through a joined character",
           {from},
           {{"abcd東e\xCC\x81z"}},
           5,
           "FROM\nab…e\xCC\x81z\n"},
          {"cut before a joining character", {from}, {{"abcde\xCC\x81z"}}, 4, "FROM\nab…z\n"},
          {"words that just fit", {value}, {{"ab cd ef"}}, 5, "VALUE\nab cd\nef\n"},
          {"an address",
           {value},
           {{"robin.hartwell@workshop.example.org"}},
           20,
           "VALUE\nrobin.hartwell@\nworkshop.example.org\n"},
          {"an address without a mark in reach",
           {value},
           {{"a@bcdefghijklmnopqrstuvwxyz"}},
           20,
           "VALUE\na@bcdefghijklmnopqrs\ntuvwxyz\n"},
      };
  for (const auto& [name, columns, rows, width, expected] : cases) {
    SCOPED_TRACE(name);
    const std::string text = written(columns, rows, {.width = width});
    EXPECT_EQ(text, expected);
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
