#include "tools/presentation/WatchReport.h"

#include <sstream>
#include <string>

#include "platform/foundation/JSONWriter.h"
#include "tools/presentation/DonationPresenter.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/TextTable.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

void addRow(TextTable& table, const char* word, const WatchedEntry& entry) {
  const ValueOrigin* origin = entry.origin.get();
  table.addRow({word, titleOfKind(entry.value), textOf(entry.value), labelOf(entry.value),
                origin ? origin->bundleIdentifier : "",
                origin ? "until " + dayOf(origin->expirationDate) : ""});
}

void writeEntry(JSONWriter& json, const WatchedEntry& entry) {
  json.beginObject();
  DonationPresenter::writeContent(json, entry.value);
  if (entry.origin) {
    json.key("origin");
    DonationPresenter::writeOrigin(json, *entry.origin);
  }
  json.endObject();
}

void writeEntries(JSONWriter& json, const char* key, const std::vector<WatchedEntry>& entries) {
  json.key(key).beginArray();
  for (const WatchedEntry& entry : entries) writeEntry(json, entry);
  json.endArray();
}

JSONWriter eventAt(Date when, const char* event) {
  JSONWriter json;
  json.beginObject().key("time").value(when.iso8601()).key("event").value(event);
  return json;
}

std::string changesInJSON(Date when, const CardChanges& changes) {
  JSONWriter json = eventAt(when, "changed");
  writeEntries(json, "added", changes.added);
  writeEntries(json, "removed", changes.removed);
  json.key("changed").beginArray();
  for (const CardChanges::Change& change : changes.changed) {
    json.beginObject().key("from");
    writeEntry(json, change.from);
    json.key("to");
    writeEntry(json, change.to);
    json.endObject();
  }
  json.endArray();
  return std::move(json.endObject()).take();
}

}  // namespace

void WatchReport::write(std::string_view lines) {
  out << lines << std::flush;
  if (!out) failed();
}

void WatchReport::writeEvent(Date when, const char* event, const char* sentence) {
  if (format == Format::text) return write(when.iso8601() + "  " + sentence + "\n");
  write(eventAt(when, event).endObject().text() + "\n");
}

void WatchReport::began(bool agentIsThere) {
  if (format == Format::text) return write("watching…\n");
  JSONWriter json = eventAt(Date::now(), "watching");
  write(json.key("agentAnswers").value(agentIsThere).endObject().text() + "\n");
}

void WatchReport::agentAppeared(Date when) {
  writeEvent(when, "agentAppeared", "An agent is there.");
}

void WatchReport::agentEnded(Date when) { writeEvent(when, "agentEnded", "The agent has ended."); }

void WatchReport::refused(Date when, const Error& error) {
  if (format == Format::text) {
    std::ostringstream lines;
    screen.writeParagraph(
        lines, when.iso8601() + "  The agent gives no card: " + printable(error.description()), 0,
        2);
    return write(lines.str());
  }
  JSONWriter json = eventAt(when, "refused");
  json.key("error").beginObject();
  json.key("domain").value(error.domain()).key("code").value(error.code());
  json.key("description").value(error.debugDescription()).endObject();
  write(json.endObject().text() + "\n");
}

void WatchReport::changed(Date when, const CardChanges& changes) {
  if (format == Format::json) return write(changesInJSON(when, changes) + "\n");
  if (changes.empty()) {
    return write(when.iso8601() + "  Donations have changed, the card has not.\n");
  }
  using Column = TextTable::Column;
  TextTable table({"", "", "", "", Column("", TextTable::Fit::cut, TextStyle::dim),
                   Column("", TextTable::Fit::whole, TextStyle::dim)});
  for (const WatchedEntry& entry : changes.added) addRow(table, "added", entry);
  for (const WatchedEntry& entry : changes.removed) addRow(table, "removed", entry);
  for (const CardChanges::Change& change : changes.changed) {
    addRow(table, change.isRenewal() ? "renewed" : "changed", change.to);
    if (!change.isRenewal()) addRow(table, "was", change.from);
  }
  std::ostringstream lines;
  lines << screen.styled(when.iso8601(), TextStyle::bold) << "\n";
  table.write(lines, screen, "  ");
  write(lines.str());
}

}  // namespace quenlet
