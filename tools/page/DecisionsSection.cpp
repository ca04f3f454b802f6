#include <algorithm>

#include "tools/page/PageSections.h"
#include "tools/page/PageText.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

constexpr std::size_t mostOpenDecisions = 12;

void writeTable(HTMLWriter& html, const std::vector<FeedbackDecision>& decisions) {
  {
    const auto table = html.open("table");
    html.element("caption", "Values that you rejected or confirmed");
    writeHeadings(html, {"Value", "Decision"});
    const auto body = html.open("tbody");
    const std::size_t listed = std::min(decisions.size(), mostRows);
    for (std::size_t i = 0; i < listed; ++i) {
      const auto row = html.open("tr");
      {
        const auto value = html.open("th", {{"scope", "row"}});
        writeForeign(html, textOf(decisions[i].value));
      }
      html.element("td", wordFor(decisions[i].status));
    }
  }
  writeOmission(html, decisions.size(), "quenlet rejections");
}

}  // namespace

void writeDecisions(HTMLWriter& html, const PageContent& content) {
  if (content.decisions.empty()) return;
  const auto section =
      html.open("section", {{"id", "decisions"}, {"aria-labelledby", "decisions-h"}});
  html.element("h2", {{"id", "decisions-h"}}, "What you decided");
  html.element("p", {{"class", "note"}},
               "These values stay away, even if someone donates them again.");
  if (content.decisions.size() <= mostOpenDecisions) return writeTable(html, content.decisions);
  const auto details = html.open("details");
  html.element("summary", counted(content.decisions.size(), "value"));
  writeTable(html, content.decisions);
}

}  // namespace quenlet
