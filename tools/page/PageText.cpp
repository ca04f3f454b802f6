#include "tools/page/PageText.h"

#include <array>

#include "tools/presentation/TerminalText.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

constexpr std::size_t mostColumnsOfText = 300;

}  // namespace

std::string monthText(const std::string& month) {
  constexpr std::array names = {"January",   "February", "March",    "April",
                                "May",       "June",     "July",     "August",
                                "September", "October",  "November", "December"};
  return std::string(names.at(std::stoul(month.substr(5)) - 1)) + " " + month.substr(0, 4);
}

void writeForeign(HTMLWriter& html, std::string_view text) {
  html.element("bdi", shortened(printable(text), mostColumnsOfText));
}

void writeDay(HTMLWriter& html, Date date) {
  const std::string day = dayOf(date);
  const std::string dayOfMonth = day.substr(day[8] == '0' ? 9 : 8);
  html.element("time", {{"datetime", day}}, dayOfMonth + " " + monthText(day.substr(0, 7)));
}

void writeUntil(HTMLWriter& html, Date expires) {
  if (expires >= Date::distantFuture()) return;
  html.text(" ");
  const auto span = html.open("span", {{"class", "until"}});
  html.text("until ");
  writeDay(html, expires);
}

void writeHeadings(HTMLWriter& html, std::initializer_list<std::string_view> headings) {
  const auto head = html.open("thead");
  const auto row = html.open("tr");
  for (const std::string_view heading : headings) {
    html.element("th", {{"scope", "col"}}, heading);
  }
}

void writeOmission(HTMLWriter& html, std::size_t allRows, std::string_view command) {
  if (allRows <= mostRows) return;
  const auto paragraph = html.open("p", {{"class", "note"}});
  html.text("And " + numberText(allRows - mostRows) + " more, which this page leaves out: ");
  html.element("code", command);
  html.text(" shows them all.");
}

}  // namespace quenlet
