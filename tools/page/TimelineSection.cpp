#include <algorithm>

#include "tools/owner/AgentDonations.h"
#include "tools/page/DonationGroups.h"
#include "tools/page/PageSections.h"
#include "tools/page/PageText.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

constexpr double week = 7 * 24 * 60 * 60;
constexpr std::size_t mostMonths = 24;
constexpr std::size_t mostValuesNamed = 3;

// A bar whose length is that part of a hundred. Its length is an attribute, since the policy of the
// page allows no styles but those of the style sheet.
void writeBar(HTMLWriter& html, std::size_t percent) {
  const auto picture = html.open("svg", {{"class", "bar"}, {"aria-hidden", "true"}});
  const std::string width = std::to_string(std::max<std::size_t>(percent, 1)) + "%";
  html.element("rect", {{"width", width}, {"height", "100%"}, {"rx", "4"}}, "");
}

void writeMonth(HTMLWriter& html, const ExpiryMonth& month, std::size_t most) {
  const std::size_t count = month.donations.size();
  const auto row = html.open("tr");
  html.element("th", {{"scope", "row"}}, month.month.empty() ? "Never" : monthText(month.month));
  html.element("td", {{"class", "number"}}, numberText(count));
  {
    const auto bar = html.open("td", {{"class", "bars"}});
    writeBar(html, count * 100 / most);
  }
  const auto values = html.open("td", {{"class", "what"}});
  const std::size_t named = std::min(count, mostValuesNamed);
  for (std::size_t i = 0; i < named; ++i) {
    if (i > 0) html.text(", ");
    writeForeign(html, textOf(month.donations[i]->value));
  }
  if (named < count) html.text(" and " + numberText(count - named) + " more");
}

void writeTable(HTMLWriter& html, const std::vector<ExpiryMonth>& months) {
  std::size_t most = 1;
  for (const ExpiryMonth& month : months) most = std::max(most, month.donations.size());
  const bool hasNever = months.back().month.empty();
  const std::size_t dated = months.size() - (hasNever ? 1 : 0);
  const std::size_t listed = std::min(dated, mostMonths);
  {
    const auto table = html.open("table", {{"class", "timeline"}});
    html.element("caption", "Donations by the month in which they expire");
    writeHeadings(html, {"Month", "Donations", "", "Among them"});
    const auto body = html.open("tbody");
    for (std::size_t i = 0; i < listed; ++i) writeMonth(html, months[i], most);
    if (hasNever) writeMonth(html, months.back(), most);
  }
  if (listed < dated) {
    html.element("p", {{"class", "note"}}, "And " + counted(dated - listed, "later month") + ".");
  }
}

// The agent lists what has expired until it next starts.
std::string soonText(std::size_t soon, std::size_t expired) {
  if (soon == 0) return "Nothing expires within a week.";
  if (soon == expired) {
    return counted(expired, "donation has", "donations have") + " expired already.";
  }
  const std::string all = counted(soon, "donation expires", "donations expire") + " within a week";
  if (expired == 0) return all + ".";
  return all + "; " + counted(expired, "of them has", "of them have") + " expired already.";
}

void writeSoon(HTMLWriter& html, const PageContent& content) {
  DonationValues values;
  values.reserve(content.donations.size());
  for (const PageDonation& donation : content.donations) {
    values.push_back(donation.stated.donation);
  }
  const std::size_t soon = countExpiring(values, content.madeOn.addingSeconds(week));
  html.element("p", {{"class", soon > 0 ? "note warning" : "note"}},
               soonText(soon, countExpiring(values, content.madeOn)));
}

}  // namespace

void writeTimeline(HTMLWriter& html, const PageContent& content) {
  const std::vector<ExpiryMonth> months = expiryByMonth(content);
  if (months.empty()) return;
  const auto section = html.open("section", {{"id", "expiry"}, {"aria-labelledby", "expiry-h"}});
  html.element("h2", {{"id", "expiry-h"}}, "What expires");
  writeSoon(html, content);
  writeTable(html, months);
}

}  // namespace quenlet
