#include <algorithm>

#include "tools/page/PageSections.h"
#include "tools/page/PageText.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

constexpr std::size_t mostOpenDonors = 12;
constexpr std::size_t mostClustersNamed = 3;

void writeClusters(HTMLWriter& html, const std::set<std::string>& clusters) {
  const auto cell = html.open("td");
  if (clusters.empty()) html.text("none");
  std::size_t named = 0;
  for (const std::string& cluster : clusters) {
    if (named == mostClustersNamed) break;
    if (named++ > 0) html.text(", ");
    writeForeign(html, cluster);
  }
  if (named < clusters.size()) html.text(" and " + numberText(clusters.size() - named) + " more");
}

void writeDonor(HTMLWriter& html, const DonorGroup& donor) {
  const auto row = html.open("tr");
  {
    const auto name = html.open("th", {{"scope", "row"}});
    writeForeign(html, donor.bundleIdentifier);
  }
  writeClusters(html, donor.clusters);
  html.element("td", {{"class", "number"}}, numberText(donor.shown));
  html.element("td", {{"class", "number"}}, numberText(donor.leftOut));
  {
    const auto given = html.open("td");
    writeDay(html, donor.lastDonation);
  }
  const auto expires = html.open("td");
  donor.nextExpiration < Date::distantFuture() ? writeDay(html, donor.nextExpiration)
                                               : html.text("never");
}

void writeTable(HTMLWriter& html, const std::vector<DonorGroup>& donors) {
  {
    const auto table = html.open("table", {{"class", "donors"}});
    html.element("caption", "Donors, and what became of what they gave");
    writeHeadings(html, {"Donor", "Clusters", "Shown", "Left out", "Last gave", "Next expires"});
    const auto body = html.open("tbody");
    const std::size_t listed = std::min(donors.size(), mostRows);
    for (std::size_t i = 0; i < listed; ++i) writeDonor(html, donors[i]);
  }
  writeOmission(html, donors.size(), "quenlet list");
}

}  // namespace

void writeDonors(HTMLWriter& html, const PageContent& content) {
  const std::vector<DonorGroup>& donors = content.donorGroups;
  if (donors.empty()) return;
  const auto section = html.open("section", {{"id", "donors"}, {"aria-labelledby", "donors-h"}});
  html.element("h2", {{"id", "donors-h"}}, "Donors");
  if (donors.size() <= mostOpenDonors) return writeTable(html, donors);
  const auto details = html.open("details");
  html.element("summary", counted(donors.size(), "donor"));
  writeTable(html, donors);
}

}  // namespace quenlet
