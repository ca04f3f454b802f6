#include "browser/host/CardAnswer.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/contacts/PhoneNumberLibrary.h"
#include "platform/contacts/PhoneNumberScanner.h"
#include "platform/foundation/Base64.h"
#include "platform/foundation/JSONWriter.h"
#include "tools/owner/WholeCard.h"
#include "tools/page/DonationGroups.h"
#include "tools/presentation/ImageType.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/ValueText.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

constexpr char ownCard[] = "your own card";
// The most columns of a text that is only read.
constexpr std::size_t mostColumns = 200;

bool isForForms(std::string_view text) { return text.size() <= CardAnswer::mostBytesInText; }
bool isForForms(const PhoneNumber& number) { return isForForms(number.stringValue()); }
bool isForForms(const PostalAddress& address) {
  return std::all_of(postalFieldsByKey.begin(), postalFieldsByKey.end(),
                     [&](const auto& field) { return isForForms(address.*field.second); });
}

std::string readable(std::string_view text) { return shortened(printable(text), mostColumns); }

// What a part of the card that can be left out for its size is called.
enum class Part : std::uint8_t { picture, leftOut, entries };

// Writes one answer, with or without some parts.
class AnswerWriter final {
 public:
  AnswerWriter(const CardReading& written, std::set<Part> withoutParts)
      : reading(written),
        card(WholeCard::of(written.content.own.contact, written.content.donated)),
        without(std::move(withoutParts)) {}

  [[nodiscard]] std::string write(std::int64_t request) &&;

 private:
  [[nodiscard]] bool has(Part part) const { return !without.contains(part); }
  void writeName();
  void writePicture();
  void writeLeftOut();
  void writeNotes();
  template <typename T>
  void writeEntries(const char* key, const LabeledValues<T>& entries);
  void writeText(const char* key, std::string_view text) {
    if (!text.empty() && isForForms(text)) json.key(key).value(text);
  }
  void writeValue(const std::string& emailAddress) { writeText("value", emailAddress); }
  void writeValue(const PhoneNumber& number);
  void writeValue(const PostalAddress& address);
  void note(std::string sentence) { notes.push_back(std::move(sentence)); }

  const CardReading& reading;
  const WholeCard card;
  const std::set<Part> without;
  JSONWriter json;
  std::vector<std::string> notes;
};

std::string AnswerWriter::write(std::int64_t request) && {
  json.beginObject().key("id").value(request).key("state").value(wordFor(reading.state));
  json.key("sentence").value(sentenceFor(reading.state));
  writeName();
  writeEntries("emails", card.contact.emailAddresses());
  writeEntries("phones", card.contact.phoneNumbers());
  writeEntries("addresses", card.contact.postalAddresses());
  writePicture();
  writeLeftOut();
  writeNotes();
  return std::move(json.endObject()).take();
}

void AnswerWriter::writeName() {
  const auto name = PersonNameComponents::componentsForContact(card.contact);
  json.key("name").beginObject();
  if (has(Part::entries) && !(name == PersonNameComponents())) {
    writeText("prefix", name.namePrefix.value_or(""));
    writeText("given", name.givenName.value_or(""));
    writeText("middle", name.middleName.value_or(""));
    writeText("family", name.familyName.value_or(""));
    writeText("suffix", name.nameSuffix.value_or(""));
    writeText("nickname", name.nickname.value_or(""));
    json.key("shown").value(readable(textOf(name)));
    json.key("source").value(card.isNameOwn ? ownCard : "donated");
  }
  json.endObject();
}

template <typename T>
void AnswerWriter::writeEntries(const char* key, const LabeledValues<T>& entries) {
  std::size_t written = 0;
  json.key(key).beginArray();
  for (const auto& entry : entries) {
    const bool isTaken = has(Part::entries) && written < CardAnswer::mostEntries &&
                         isForForms(entry->value) && isForForms(entry->label);
    if (!isTaken) continue;
    ++written;
    const auto& origin = entry->storeInfo.valueOrigin;
    json.beginObject();
    writeValue(entry->value);
    json.key("shown").value(readable(textOf(entry->value)));
    json.key("label").value(readable(entry->label));
    json.key("source").value(origin ? readable(origin->bundleIdentifier) : ownCard);
    if (origin && origin->expirationDate < Date::distantFuture()) {
      json.key("until").value(dayOf(origin->expirationDate));
    }
    json.key("own").value(!origin).endObject();
  }
  json.endArray();
  if (written == entries.size()) return;
  note(numberText(entries.size() - written) + " of the " + key +
       " are too long or too many for a form; quenlet me shows them");
}

// How a form wants it. Without a country code only as it was written.
void AnswerWriter::writeValue(const PhoneNumber& number) {
  writeText("value", number.stringValue());
  PhoneNumberScanner scanner(number.stringValue());
  const std::optional<std::string> digits = scanner.scan();
  if (!digits) return;
  writeText("digits", *digits);
  writeText("extension", scanner.extension());
  if (!digits->starts_with('+')) return;
  const auto forms = PhoneNumberLibrary::shared().write(*digits);
  if (!forms) return;
  json.key("countryCode").value("+" + std::to_string(forms->countryCode));
  if (std::string_view(forms->region) != "ZZ") writeText("region", forms->region);
  writeText("international", forms->international);
  writeText("national", forms->national);
}

void AnswerWriter::writeValue(const PostalAddress& address) {
  for (const auto& [key, field] : postalFieldsByKey) writeText(key.data(), address.*field);
}

void AnswerWriter::writePicture() {
  const auto& bytes = card.contact.imageData();
  if (!bytes) return;
  const auto type = ImageType::of(*bytes);
  if (!type) return note("The picture is of a type that no form takes.");
  if (bytes->size() > CardAnswer::mostBytesInPicture) {
    return note("The picture is too large for the browser: " + imageText(*bytes) + ".");
  }
  if (!has(Part::picture)) return note("The picture is left out: the card is very large.");
  std::string text;
  appendBase64(text, *bytes);
  json.key("picture").beginObject().key("type").value(type->mediaType).key("bytes").value(text);
  json.key("source").value(card.isImageOwn ? ownCard : "donated").endObject();
}

void AnswerWriter::writeLeftOut() {
  std::size_t written = 0;
  std::size_t all = 0;
  json.key("leftOut").beginArray();
  for (const ReasonGroup& group : leftOutByReason(reading.content)) {
    all += group.values.size();
    if (!has(Part::leftOut) || written == CardAnswer::mostLeftOut) continue;
    json.beginObject().key("title").value(titleOf(group.state));
    json.key("advice").value(adviceFor(group.state)).key("values").beginArray();
    for (const LeftOutValue& value : group.values) {
      if (written == CardAnswer::mostLeftOut) break;
      ++written;
      json.beginObject();
      json.key("value").value(value.value ? readable(shownText(*value.value)) : "an entry");
      json.key("kind").value(value.value ? titleOfKind(*value.value) : "");
      json.key("source").value(readable(value.bundleIdentifier));
      json.key("because").value(readable(value.because)).endObject();
    }
    json.endArray().endObject();
  }
  json.endArray();
  if (written < all) {
    note(numberText(all - written) + " more values are left out: quenlet why shows them all.");
  }
}

void AnswerWriter::writeNotes() {
  if (!has(Part::entries)) note("The card is too large for the browser: quenlet me shows it.");
  json.key("notes").beginArray();
  for (const std::string& note : reading.notes) json.value(readable(note));
  for (const std::string& note : notes) json.value(readable(note));
  json.endArray();
}

}  // namespace

std::string CardAnswer::to(std::int64_t request, const CardReading& reading) {
  std::set<Part> without;
  for (const Part next : {Part::picture, Part::leftOut, Part::entries}) {
    std::string answer = AnswerWriter(reading, without).write(request);
    if (answer.size() <= mostBytes) return answer;
    without.insert(next);
  }
  return AnswerWriter(reading, without).write(request);
}

}  // namespace quenlet
