#include "tools/page/OwnerPage.h"

#include <algorithm>

#include "platform/foundation/Base64.h"
#include "platform/foundation/SHA256.h"
#include "tools/page/HTMLWriter.h"
#include "tools/page/PageSections.h"
#include "tools/page/PageStyle.h"
#include "tools/page/PageText.h"

namespace quenlet {
namespace {

// A browser takes the style sheet only if it has this digest, byte for byte.
std::string policy() {
  std::string text = "default-src 'none'; img-src data:; style-src 'sha256-";
  appendBase64(text, sha256(pageStyle.text()));
  return text + "'; base-uri 'none'; form-action 'none'";
}

void writeHead(HTMLWriter& html) {
  const auto head = html.open("head");
  html.emptyElement("meta", {{"charset", "utf-8"}});
  html.emptyElement("meta", {{"http-equiv", "Content-Security-Policy"}, {"content", policy()}});
  html.emptyElement("meta", {{"name", "referrer"}, {"content", "no-referrer"}});
  html.emptyElement("meta", {{"name", "viewport"}, {"content", "width=device-width"}});
  html.emptyElement("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
  html.element("title", "Your me card");
  html.styleSheet(pageStyle);
}

void writeFigure(HTMLWriter& html, HTMLName section, std::size_t count, std::string_view what) {
  const auto item = html.open("li");
  const auto link = html.openLinkTo(section);
  html.element("strong", numberText(count));
  html.text(" ");
  html.text(what);
}

// Says at a glance what the sections tell in detail.
void writeFigures(HTMLWriter& html, const PageContent& content) {
  if (content.donations.empty() && content.missing.empty()) return;
  const auto shown = static_cast<std::size_t>(
      std::count_if(content.donations.begin(), content.donations.end(),
                    [](const PageDonation& donation) { return donation.stated.isShown(); }));
  const auto navigation = html.open("nav", {{"aria-label", "On this page"}});
  const auto list = html.open("ul");
  writeFigure(html, "card", shown, shown == 1 ? "donation shown" : "donations shown");
  if (const std::size_t leftOut = content.donations.size() - shown + content.missing.size();
      leftOut > 0) {
    writeFigure(html, "left-out", leftOut, "left out");
  }
  if (const std::size_t donors = content.donorGroups.size(); donors > 0) {
    writeFigure(html, "donors", donors, donors == 1 ? "donor" : "donors");
  }
  if (!content.decisions.empty()) {
    writeFigure(html, "decisions", content.decisions.size(), "kept away");
  }
}

void writePreference(HTMLWriter& html, const PageContent& content) {
  if (content.donationsEnabled) return;
  const auto notice = html.open("p", {{"class", "warning"}});
  html.text("Donations are off, so the agent keeps and shows none: ");
  html.element("code", "quenlet enable");
}

void writeFault(HTMLWriter& html, const OwnCard& own) {
  if (!own.fault) return;
  const auto notice = html.open("p", {{"class", "warning"}});
  html.text("Your own card cannot be read and does not count: ");
  writeForeign(html, own.fault->description());
}

void writeBody(HTMLWriter& html, const PageContent& content) {
  const auto body = html.open("body");
  {
    const auto header = html.open("header");
    html.element("h1", "Your me card");
    const auto made = html.open("p", {{"class", "note"}});
    html.text(content.donationsEnabled ? "As your agent knew it on " : "Made on ");
    writeDay(html, content.madeOn);
  }
  {
    const auto main = html.open("main");
    writePreference(html, content);
    writeFault(html, content.own);
    writeCard(html, content);
    writeFigures(html, content);
    writeLeftOut(html, content);
    writeTimeline(html, content);
    writeDonors(html, content);
    writeDecisions(html, content);
  }
  const auto footer = html.open("footer");
  html.element("p",
               "Made by quenlet on this computer. The page runs no script and loads nothing "
               "from elsewhere. It holds personal values: keep it to yourself.");
}

}  // namespace

std::string OwnerPage::of(const PageContent& content) {
  HTMLWriter html;
  {
    const auto root = html.open("html", {{"lang", "en"}});
    writeHead(html);
    writeBody(html, content);
  }
  return std::move(html).take();
}

}  // namespace quenlet
