#include "tools/presentation/WholeCardPresenter.h"

#include <cstdint>
#include <utility>

#include "platform/foundation/JSONWriter.h"
#include "tools/presentation/DonationPresenter.h"
#include "tools/presentation/TextTable.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

const char* sourceOf(bool isOwn) { return isOwn ? "own card" : "donated"; }

std::string nameOf(const WholeCard& card) {
  return textOf(PersonNameComponents::componentsForContact(card.contact));
}

template <typename T>
void addEntries(TextTable& table, const char* title, const LabeledValues<T>& entries) {
  std::string heading = title;
  for (const auto& entry : entries) {
    const ValueOrigin* origin = entry->storeInfo.valueOrigin.get();
    table.addRow({std::exchange(heading, {}), textOf(entry->value), entry->label,
                  origin == nullptr ? sourceOf(true) : "from " + origin->bundleIdentifier,
                  origin == nullptr ? "" : "until " + dayOf(origin->expirationDate)});
  }
}

template <typename T>
void writeEntries(JSONWriter& json, const char* key, const LabeledValues<T>& entries) {
  json.key(key).beginArray();
  for (const auto& entry : entries) {
    json.beginObject().key("value");
    DonationPresenter::writeBareValue(json, entry->value);
    DonationPresenter::writeLabel(json, entry->label);
    const auto& origin = entry->storeInfo.valueOrigin;
    json.key("source").value(sourceOf(origin == nullptr));
    if (origin) {
      json.key("origin");
      DonationPresenter::writeOrigin(json, *origin);
    }
    json.endObject();
  }
  json.endArray();
}

template <typename T>
std::optional<std::string> first(const LabeledValues<T>& entries) {
  if (entries.empty()) return std::nullopt;
  return quenlet::textOf(entries.front()->value);
}

}  // namespace

void WholeCardPresenter::writeText(std::ostream& out, const WholeCard& card, const Screen& screen) {
  TextTable table({"", "", "", TextTable::Column("", TextTable::Fit::cut),
                   TextTable::Column("", TextTable::Fit::whole)});
  const Contact& contact = card.contact;
  if (const std::string name = nameOf(card); !name.empty()) {
    table.addRow({"Name", name, "", sourceOf(card.isNameOwn), ""});
  }
  addEntries(table, "E-mail", contact.emailAddresses());
  addEntries(table, "Phone", contact.phoneNumbers());
  addEntries(table, "Address", contact.postalAddresses());
  if (contact.imageData()) {
    table.addRow({"Image", imageText(*contact.imageData()), "", sourceOf(card.isImageOwn), ""});
  }
  table.write(out, screen);
}

void WholeCardPresenter::writeJSON(std::ostream& out, const WholeCard& card) {
  JSONWriter json;
  const Contact& contact = card.contact;
  const auto name = PersonNameComponents::componentsForContact(contact).dictionaryRepresentation();
  json.beginObject().key("name");
  DonationPresenter::writeTexts(json, name);
  if (!name.empty()) json.key("nameSource").value(sourceOf(card.isNameOwn));
  writeEntries(json, "emailAddresses", contact.emailAddresses());
  writeEntries(json, "phoneNumbers", contact.phoneNumbers());
  writeEntries(json, "postalAddresses", contact.postalAddresses());
  const auto& image = contact.imageData();
  json.key("imageBytes").value(static_cast<std::int64_t>(image ? image->size() : 0));
  if (image) json.key("imageSource").value(sourceOf(card.isImageOwn));
  out << json.endObject().text() << "\n";
}

std::optional<std::string> WholeCardPresenter::firstOf(const WholeCard& card,
                                                       const std::string& kind) {
  if (kind == "email") return first(card.contact.emailAddresses());
  if (kind == "phone") return first(card.contact.phoneNumbers());
  if (kind == "address") return first(card.contact.postalAddresses());
  const std::string name = nameOf(card);
  return name.empty() ? std::nullopt : std::optional(name);
}

std::string WholeCardPresenter::textOf(const SkippedEntry& fault) {
  return "line " + std::to_string(fault.line) + ": " +
         (fault.property.empty() ? "not a property" : fault.property + " without a usable value");
}

}  // namespace quenlet
