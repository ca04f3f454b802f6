#include "tools/help/HelpText.h"

#include <algorithm>
#include <sstream>

#include "tools/presentation/TextTable.h"

namespace quenlet {
namespace {

void writeTable(std::ostream& out, const Screen& screen, const char* title,
                const TextTable& table) {
  if (table.empty()) return;
  out << "\n" << screen.styled(title, TextStyle::bold) << "\n";
  table.write(out, screen, "  ");
}

void writeRemarks(std::ostream& out, const Screen& screen,
                  const std::vector<HelpPage::Block>& remarks) {
  bool isAfterParagraph = false;
  for (const HelpPage::Block& block : remarks) {
    // The lines of an example stand right below the sentence that announces them.
    if (block.isParagraph || !isAfterParagraph) out << "\n";
    isAfterParagraph = block.isParagraph;
    for (const std::string& line : block.lines) {
      if (block.isParagraph) {
        screen.writeParagraph(out, line);
      } else {
        out << line << "\n";
      }
    }
  }
}

TextTable emptyTable() { return TextTable({{"", TextTable::Fit::whole}, ""}); }

}  // namespace

std::string helpText(const HelpPage& page, const Screen& outputScreen) {
  // Longer lines are hard to read.
  constexpr std::size_t mostWidth = 100;
  Screen screen = outputScreen;
  screen.width = std::min(screen.width, mostWidth);
  std::ostringstream out;
  screen.writeParagraph(out, page.summary);
  out << "\n";
  screen.writeParagraph(out, "Usage: " + page.name() + " " + page.usage(), 0, 7);
  TextTable arguments = emptyTable();
  for (const auto& argument : page.arguments) arguments.addRow({textOf(argument), argument.text});
  writeTable(out, screen, "Arguments:", arguments);
  TextTable options = emptyTable();
  for (const auto& option : page.options) options.addRow({textOf(option), option.text});
  writeTable(out, screen, "Options:", options);
  TextTable words = emptyTable();
  for (const HelpPage& below : page.pages) words.addRow({below.words.back(), below.summary});
  writeTable(out, screen, "Words:", words);
  writeRemarks(out, screen, page.remarks);
  return out.str();
}

}  // namespace quenlet
