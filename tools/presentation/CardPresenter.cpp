#include "tools/presentation/CardPresenter.h"

#include <map>
#include <string>
#include <utility>

#include "platform/foundation/JSONWriter.h"
#include "tools/presentation/DonationPresenter.h"
#include "tools/presentation/TextTable.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

// The numbers of donations in the list, by identifier.
using Numbers = std::map<std::string, std::size_t>;

Numbers numbersOf(const StatedDonations& listed) {
  Numbers numbers;
  for (const StatedDonation& stated : listed) {
    numbers.emplace(stated.donation->decoded().origin.donationIdentifier, stated.number);
  }
  return numbers;
}

// Writes sections with an empty line between them.
class SectionWriter final {
 public:
  SectionWriter(std::ostream& stream, const Screen& outputScreen, Numbers listNumbers)
      : out(stream), screen(outputScreen), numbers(std::move(listNumbers)) {}

  void write(const char* title, const std::string& line) {
    TextTable section;
    if (!line.empty()) section.addRow({line});
    write(title, section);
  }
  template <typename T>
  void write(const char* title, const LabeledValues<T>& entries) {
    using Fit = TextTable::Fit;
    TextTable section({{"", Fit::whole},
                       "",
                       "",
                       {"", Fit::cut, TextStyle::dim},
                       {"", Fit::whole, TextStyle::dim}});
    for (const auto& entry : entries) {
      addEntry(section, textOf(entry->value), entry->label, entry->storeInfo.valueOrigin.get());
    }
    write(title, section);
  }
  [[nodiscard]] bool wroteAnything() const { return any; }

 private:
  void write(const char* title, const TextTable& section) {
    if (section.empty()) return;
    if (any) out << "\n";
    any = true;
    out << screen.styled(title, TextStyle::bold) << "\n";
    section.write(out, screen, "  ");
  }
  void addEntry(TextTable& section, const std::string& value, const std::string& label,
                const ValueOrigin* origin) const {
    if (origin == nullptr) return section.addRow({"", value, label, "", ""});
    const auto found = numbers.find(origin->donationIdentifier);
    section.addRow({found == numbers.end() ? "" : std::to_string(found->second), value, label,
                    "from " + origin->bundleIdentifier, "until " + dayOf(origin->expirationDate)});
  }

  std::ostream& out;
  const Screen& screen;
  const Numbers numbers;
  bool any = false;
};

template <typename T>
void writeList(JSONWriter& json, const char* key, const LabeledValues<T>& entries) {
  json.key(key).beginArray();
  for (const auto& entry : entries) {
    json.beginObject().key("value");
    DonationPresenter::writeBareValue(json, entry->value);
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

bool CardPresenter::writeText(std::ostream& out, const Screen& screen, const Contact& card,
                              const StatedDonations& listed) {
  SectionWriter sections(out, screen, numbersOf(listed));
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
