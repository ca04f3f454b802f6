#pragma once

#include "tools/page/HTMLWriter.h"
#include "tools/page/PageContent.h"

// The sections of the page, in their order. Each writes nothing when there is nothing to show.
namespace quenlet {

// The card with its name, picture and values.
void writeCard(HTMLWriter& html, const PageContent& content);
// Values that are not on the card, by reason.
void writeLeftOut(HTMLWriter& html, const PageContent& content);
// What expires, by month.
void writeTimeline(HTMLWriter& html, const PageContent& content);
void writeDonors(HTMLWriter& html, const PageContent& content);
// What the owner rejected or confirmed.
void writeDecisions(HTMLWriter& html, const PageContent& content);

}  // namespace quenlet
