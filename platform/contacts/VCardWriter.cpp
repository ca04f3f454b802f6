#include <algorithm>
#include <string>
#include <utility>

#include "platform/contacts/VCard.h"
#include "platform/contacts/VCardLabels.h"
#include "platform/contacts/VCardStructures.h"
#include "platform/contacts/VCardText.h"
#include "platform/foundation/Base64.h"

namespace quenlet {
namespace {

constexpr std::size_t mostBytesInLine = 75;

std::string_view mediaTypeOf(std::string_view image) {
  if (image.starts_with("\xFF\xD8\xFF")) return "image/jpeg";
  if (image.starts_with("\x89PNG\r\n\x1A\n")) return "image/png";
  if (image.starts_with("GIF87a") || image.starts_with("GIF89a")) return "image/gif";
  return "application/octet-stream";
}

// Writes the lines of one card. An entry whose label is not a plain TYPE, or which has a country
// code, becomes a group: "item1.EMAIL:..." and "item1.X-ABLabel:...".
class VCardWriter final {
 public:
  std::string write(const Contact& contact) && {
    addLine("BEGIN:VCARD");
    addLine("VERSION:4.0");
    addFormattedName(contact);
    if (const std::string name = vCardNameText(contact); name != ";;;;") addLine("N:" + name);
    addText("NICKNAME", contact.nickname());
    for (const auto& entry : contact.emailAddresses()) {
      addEntry("EMAIL", entry->label, escapedVCardText(entry->value), {});
    }
    for (const auto& entry : contact.phoneNumbers()) {
      addEntry("TEL", entry->label, escapedVCardText(entry->value.stringValue()), {});
    }
    for (const auto& entry : contact.postalAddresses()) {
      addEntry("ADR", entry->label, vCardAddressText(entry->value), entry->value.isoCountryCode);
    }
    if (contact.imageData() && !contact.imageData()->empty()) addPhoto(*contact.imageData());
    addLine("END:VCARD");
    return std::move(card);
  }

 private:
  // FN is what programs show in a list of cards: the name, else the first other thing there is.
  // DERIVED then keeps that from being read back as a name.
  void addFormattedName(const Contact& contact) {
    const std::string name = fullName(contact);
    if (!name.empty()) return addLine("FN:" + escapedVCardText(name));
    addLine("FN;DERIVED=true:" + escapedVCardText(firstThingTold(contact)));
  }

  static std::string fullName(const Contact& contact) {
    std::string name;
    for (const std::string* part :
         {&contact.namePrefix(), &contact.givenName(), &contact.middleName(), &contact.familyName(),
          &contact.nameSuffix()}) {
      if (part->empty()) continue;
      if (!name.empty()) name += ' ';
      name += *part;
    }
    return name;
  }

  static std::string firstThingTold(const Contact& contact) {
    if (!contact.nickname().empty()) return contact.nickname();
    if (!contact.emailAddresses().empty()) return contact.emailAddresses().front()->value;
    if (!contact.phoneNumbers().empty()) return contact.phoneNumbers().front()->value.stringValue();
    return {};
  }

  void addText(const char* name, const std::string& text) {
    if (!text.empty()) addLine(name + (":" + escapedVCardText(text)));
  }

  void addEntry(std::string name, const std::string& label, const std::string& value,
                const std::string& countryCode) {
    const bool hasCustomLabel = !label.empty() && !isTypeLabel(label);
    std::string group;
    if (hasCustomLabel || !countryCode.empty()) group = "item" + std::to_string(++groups) + ".";
    if (isTypeLabel(label)) name += ";TYPE=" + label;
    addLine(group + name + ":" + value);
    if (hasCustomLabel) addLine(group + "X-ABLabel:" + escapedVCardText(label));
    if (!countryCode.empty()) addLine(group + "X-ABADR:" + escapedVCardText(countryCode));
  }

  void addPhoto(const std::string& image) {
    std::string line = "PHOTO:data:";
    line.append(mediaTypeOf(image)).append(";base64,");
    appendBase64(line, image);
    addLine(line);
  }

  // Folds a line that is too long, never within a character.
  void addLine(std::string_view line) {
    std::size_t room = mostBytesInLine;
    while (line.size() > room) {
      std::size_t end = room;
      while ((static_cast<unsigned char>(line[end]) & 0xC0) == 0x80) --end;
      card.append(line.substr(0, end)).append("\r\n ");
      line.remove_prefix(end);
      room = mostBytesInLine - 1;
    }
    card.append(line).append("\r\n");
  }

  std::string card;
  std::size_t groups = 0;
};

}  // namespace

std::string writeVCard(const Contact& contact) { return VCardWriter().write(contact); }

}  // namespace quenlet
