#include "tools/presentation/CardPresenter.h"

#include <string>

#include "platform/foundation/JSONWriter.h"
#include "tools/presentation/DonationPresenter.h"
#include "tools/presentation/TextTable.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

std::string shown(const std::string& text) { return text; }
std::string shown(const PhoneNumber& number) { return number.stringValue(); }
std::string shown(const PostalAddress& address) { return textOf(address); }

void writeValue(JSONWriter& json, const std::string& text) { json.value(text); }
void writeValue(JSONWriter& json, const PhoneNumber& number) { json.value(number.stringValue()); }
void writeValue(JSONWriter& json, const PostalAddress& address) {
  DonationPresenter::writeTexts(json, address.dictionaryRepresentation());
}

void addEntry(TextTable& section, const std::string& value, const std::string& label,
              const ValueOrigin* origin) {
  if (origin == nullptr) return section.addRow({value, label, "", "", ""});
  section.addRow({value, label, "from " + origin->bundleIdentifier, origin->donationIdentifier,
                  "until " + dayOf(origin->expirationDate)});
}

// Writes sections with an empty line between them.
class SectionWriter final {
 public:
  explicit SectionWriter(std::ostream& stream) : out(stream) {}

  void write(const char* title, const TextTable& section) {
    if (section.empty()) return;
    if (any) out << "\n";
    any = true;
    out << title << "\n";
    section.write(out, {}, "  ");
  }
  void write(const char* title, const std::string& line) {
    TextTable section;
    if (!line.empty()) section.addRow({line});
    write(title, section);
  }
  template <typename T>
  void write(const char* title, const LabeledValues<T>& entries) {
    TextTable section;
    for (const auto& entry : entries) {
      addEntry(section, shown(entry->value), entry->label, entry->storeInfo.valueOrigin.get());
    }
    write(title, section);
  }
  [[nodiscard]] bool wroteAnything() const { return any; }

 private:
  std::ostream& out;
  bool any = false;
};

template <typename T>
void writeList(JSONWriter& json, const char* key, const LabeledValues<T>& entries) {
  json.key(key).beginArray();
  for (const auto& entry : entries) {
    json.beginObject().key("value");
    writeValue(json, entry->value);
    DonationPresenter::writeLabel(json, entry->label);
    if (const auto& origin = entry->storeInfo.valueOrigin) {
      json.key("origin");
      DonationPresenter::writeOrigin(json, *origin);
    }
    json.endObject();
  }
  json.endArray();
}

}  // namespace

bool CardPresenter::writeText(std::ostream& out, const Contact& card) {
  SectionWriter sections(out);
  sections.write("Name", textOf(PersonNameComponents::componentsForContact(card)));
  sections.write("E-mail", card.emailAddresses());
  sections.write("Phone", card.phoneNumbers());
  sections.write("Address", card.postalAddresses());
  sections.write("Image", card.imageData() ? imageText(*card.imageData()) : std::string());
  return sections.wroteAnything();
}

void CardPresenter::writeJSON(std::ostream& out, const Contact& card) {
  JSONWriter json;
  json.beginObject().key("name");
  DonationPresenter::writeTexts(
      json, PersonNameComponents::componentsForContact(card).dictionaryRepresentation());
  writeList(json, "emailAddresses", card.emailAddresses());
  writeList(json, "phoneNumbers", card.phoneNumbers());
  writeList(json, "postalAddresses", card.postalAddresses());
  const std::size_t imageBytes = card.imageData() ? card.imageData()->size() : 0;
  json.key("imageBytes").value(static_cast<std::int64_t>(imageBytes));
  out << json.endObject().text() << "\n";
}

}  // namespace quenlet
