#include <algorithm>

#include "tools/page/DonationGroups.h"
#include "tools/page/PageSections.h"
#include "tools/page/PageText.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

// Up to so many rows in all, the groups are open at first.
constexpr std::size_t mostOpenRows = 12;

// Whether one sentence says why for all of them.
bool haveOneReason(const std::vector<LeftOutValue>& values) {
  return std::all_of(values.begin(), values.end(), [&](const LeftOutValue& value) {
    return value.because == values.front().because;
  });
}

void writeRow(HTMLWriter& html, const LeftOutValue& leftOut, bool withReason) {
  const auto row = html.open("tr");
  html.element("td", {{"class", "number"}}, leftOut.number > 0 ? numberText(leftOut.number) : "");
  {
    const auto value = html.open("th", {{"scope", "row"}, {"class", "value"}});
    writeForeign(html, leftOut.value ? shownText(*leftOut.value) : "an entry");
  }
  {
    const auto donor = html.open("td", {{"class", "donor"}});
    writeForeign(html, leftOut.bundleIdentifier);
  }
  if (!withReason) return;
  const auto reason = html.open("td");
  writeForeign(html, leftOut.because);
}

void writeTable(HTMLWriter& html, const ReasonGroup& group, bool withReasons) {
  const auto table = html.open("table", {{"class", withReasons ? "reasons" : "donations"}});
  html.element("caption", titleOf(group.state));
  withReasons ? writeHeadings(html, {"No.", "Value", "From", "Why"})
              : writeHeadings(html, {"No.", "Value", "From"});
  const auto body = html.open("tbody");
  const std::size_t listed = std::min(group.values.size(), mostRows);
  for (std::size_t i = 0; i < listed; ++i) writeRow(html, group.values[i], withReasons);
}

void writeGroup(HTMLWriter& html, const ReasonGroup& group, bool isOpen) {
  const auto details = isOpen ? html.open("details", {{"open", ""}}) : html.open("details");
  html.element("summary",
               std::string(titleOf(group.state)) + " – " + counted(group.values.size(), "value"));
  const bool withReasons = !haveOneReason(group.values);
  {
    const auto explanation = html.open("p", {{"class", "note"}});
    if (!withReasons) {
      writeForeign(html, group.values.front().because);
      html.text(". ");
    }
    const std::string advice = adviceFor(group.state);
    if (!advice.empty()) html.element("span", {{"class", "advice"}}, advice + ".");
  }
  writeTable(html, group, withReasons);
  writeOmission(html, group.values.size(), "quenlet why");
}

}  // namespace

void writeLeftOut(HTMLWriter& html, const PageContent& content) {
  const std::vector<ReasonGroup> groups = leftOutByReason(content);
  if (groups.empty()) return;
  std::size_t rows = 0;
  for (const ReasonGroup& group : groups) rows += group.values.size();
  const auto section =
      html.open("section", {{"id", "left-out"}, {"aria-labelledby", "left-out-h"}});
  html.element("h2", {{"id", "left-out-h"}}, "Left out");
  html.element("p", {{"class", "note"}},
               "These values were given for your card, but it does not show them.");
  for (const ReasonGroup& group : groups) writeGroup(html, group, rows <= mostOpenRows);
}

}  // namespace quenlet
