#include "tools/help/ManualPage.h"

#include <cctype>
#include <cstdio>
#include <string_view>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

std::string bold(const std::string& text) { return "\\fB" + ManualPage::escaped(text) + "\\fR"; }

std::string inCapitals(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

// What stands for a value is in italics: "--bundle ID".
std::string termOf(const HelpPage::Option& option) {
  std::string term;
  for (const std::string& name : option.names) {
    if (!term.empty()) term += ", ";
    term += bold(name);
  }
  if (option.placeholder.empty()) return term;
  return term + (option.takesValue() ? " " : "") + "\\fI" +
         ManualPage::escaped(option.placeholder) + "\\fR";
}

// The escape for an ASCII character that troff would interpret or replace; null for others.
const char* escapeOf(char32_t character) {
  switch (character) {
    case U'\\':
      return "\\e";
    case U'-':
      return "\\-";
    case U'"':
      return "\\(dq";
    case U'\'':
      return "\\(aq";
    case U'`':
      return "\\(ga";
    case U'^':
      return "\\(ha";
    case U'~':
      return "\\(ti";
    default:
      return nullptr;
  }
}

void addItem(std::string& page, const std::string& term, const std::string& text) {
  page += ".TP\n" + term + "\n" + ManualPage::escaped(text) + "\n";
}

void addRemarks(std::string& page, const std::vector<HelpPage::Block>& blocks) {
  for (const HelpPage::Block& block : blocks) {
    page += block.isParagraph ? ".PP\n" : ".PP\n.nf\n";
    for (const std::string& line : block.lines) page += ManualPage::escaped(line) + "\n";
    if (!block.isParagraph) page += ".fi\n";
  }
}

std::string reference(const std::string& name) { return bold(name) + "(1)"; }

// The pages above and below, and the agent's.
std::string seeAlso(const HelpPage& page) {
  std::string list;
  for (HelpPage above = page; above.words.size() > 1;) {
    above.words.pop_back();
    list += reference(above.name('-')) + ",\n";
  }
  for (const HelpPage& below : page.pages) list += reference(below.name('-')) + ",\n";
  return list + reference("quenlet-agent") + "\n";
}

}  // namespace

std::string ManualPage::fileName(const HelpPage& page) { return page.name('-') + ".1"; }

std::string ManualPage::render(const HelpPage& page, const std::string& version) {
  const std::string name = page.name('-');
  // Without a date: the same sources make the same page.
  std::string text = ".TH " + inCapitals(name) + " 1 \"\" \"quenlet " + version +
                     "\" \"User Commands\"\n.SH NAME\n" + escaped(name) + " \\- " +
                     escaped(page.summary) + "\n.SH SYNOPSIS\n" + bold(page.name()) + " " +
                     escaped(page.usage()) + "\n";
  if (!page.remarks.empty()) text += ".SH DESCRIPTION\n";
  addRemarks(text, page.remarks);
  if (!page.arguments.empty()) text += ".SH ARGUMENTS\n";
  for (const auto& argument : page.arguments) {
    addItem(text, "\\fI" + escaped(textOf(argument)) + "\\fR", argument.text);
  }
  if (!page.options.empty()) text += ".SH OPTIONS\n";
  for (const auto& option : page.options) addItem(text, termOf(option), option.text);
  if (!page.pages.empty()) text += ".SH WORDS\n";
  for (const HelpPage& below : page.pages) addItem(text, bold(below.words.back()), below.summary);
  return text + ".SH SEE ALSO\n" + seeAlso(page);
}

std::string ManualPage::escaped(const std::string& text) {
  std::string shown;
  std::string_view rest = text;
  while (!rest.empty()) {
    const char32_t character = takeCharacter(rest).value_or(0xFFFD);
    if (const char* escape = escapeOf(character)) {
      shown += escape;
    } else if (character < 0x80) {
      shown += static_cast<char>(character);
    } else {
      char code[16];
      std::snprintf(code, sizeof code, "\\[u%04X]", static_cast<unsigned>(character));
      shown += code;
    }
  }
  // A dot at the start of a line would begin a request.
  return shown.starts_with('.') ? "\\&" + shown : shown;
}

}  // namespace quenlet
