#include "tools/presentation/TextTable.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>

#include "platform/foundation/FileDescriptor.h"
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
      {"identifiers first, then the widest",
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
      {"wide and joined", {value, from}, {{"東京都港区", "e\xCC\x81t\xC3\xA9"}, {"a", "한국"}}, 80},
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
    const std::string text = written(columns, rows, {.width = width});
    EXPECT_EQ(text, tables.take(name)) << name;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(displayWidth(line), width) << line;
  }
}

TEST(TextTableTest, LeavesARowWholeThatIsToBeCopied) {
  TextTable table({Column("", Fit::whole), "", ""});
  table.addRow({"NOT WELL", "a file that is open", ""});
  table.addWholeRow({"", "do: chmod go= '/a path/that/is long'", "x"});
  std::ostringstream out;
  table.write(out, {.width = 20});
  EXPECT_EQ(out.str(),
            "NOT WELL  a file\n"
            "          that is\n"
            "          open\n"
            "          do: chmod go= '/a path/that/is long'  x\n");
  TextTable alone;
  alone.addWholeRow({"a command that is long"});
  out.str("");
  alone.write(out, {.width = 10});
  EXPECT_EQ(out.str(), "a command that is long\n");
}

TEST(TextTableTest, ColoursHeadingsAndCellsButNeitherBlanksNorWhatNobodyReads) {
  const std::vector<Column> columns = {"VALUE", Column("FROM", Fit::cut, TextStyle::dim)};
  const std::vector<TableRow> rows = {{"a", "com.example"}, {"ab", ""}};
  EXPECT_EQ(written(columns, rows, {.width = 80, .isColoured = true}),
            "\x1B[1mVALUE\x1B[0m  \x1B[1mFROM\x1B[0m\n"
            "a      \x1B[2mcom.example\x1B[0m\n"
            "ab\n");
}

// A terminal's two ends.
struct Terminal final {
  explicit Terminal(unsigned short columns) {
    const winsize size{.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
    ::grantpt(controller.get());
    ::unlockpt(controller.get());
    screen = FileDescriptor(::open(::ptsname(controller.get()), O_RDWR | O_NOCTTY));
    ::ioctl(screen.get(), TIOCSWINSZ, &size);
  }
  FileDescriptor controller{::posix_openpt(O_RDWR | O_NOCTTY)};
  FileDescriptor screen;
};

TEST(ScreenTest, IsAsWideAndAsColouredAsTheUserHasIt) {
  const Terminal terminal(133);
  const Terminal unknown(0);
  const FileDescriptor file(::open("/dev/null", O_WRONLY));
  const std::tuple<const char*, const FileDescriptor&, const char*, const char*, const char*,
                   std::size_t, bool>
      rows[] = {
          {"a terminal", terminal.screen, "", "", "xterm", 133, true},
          {"a terminal of unknown size", unknown.screen, "", "", "xterm", 80, true},
          {"no terminal", file, "", "", "xterm", 80, false},
          {"no terminal, told", file, "51", "", "xterm", 51, false},
          {"a terminal, told", terminal.screen, "51", "", "xterm", 51, true},
          {"nonsense", terminal.screen, "51x", "", "xterm", 133, true},
          {"too narrow", terminal.screen, "3", "", "xterm", 20, true},
          {"no colour", terminal.screen, "", "1", "xterm", 133, false},
          {"dumb", terminal.screen, "", "", "dumb", 133, false},
      };
  for (const auto& [name, descriptor, columns, noColour, term, width, isColoured] : rows) {
    ::setenv("COLUMNS", columns, 1);
    ::setenv("NO_COLOR", noColour, 1);
    ::setenv("TERM", term, 1);
    const Screen screen = Screen::ofDescriptor(descriptor.get());
    EXPECT_EQ(screen.width, width) << name;
    EXPECT_EQ(screen.isColoured, isColoured) << name;
  }
  for (const char* name : {"COLUMNS", "NO_COLOR", "TERM"}) ::unsetenv(name);
}

}  // namespace
}  // namespace quenlet
