#include "tools/owner/JournalEntry.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace quenlet {
namespace {

constexpr char numberKey[] = "number";
constexpr char whenKey[] = "when";
constexpr char filesKey[] = "files";
constexpr char pseudonymKey[] = "pseudonym";
constexpr char bundleKey[] = "bundleIdentifier";
constexpr char donatedKey[] = "donated";
constexpr char skippedKey[] = "skipped";
constexpr char propertyKey[] = "property";
constexpr char lineKey[] = "line";
constexpr char replacedKey[] = "replaced";
constexpr char leftOutKey[] = "leftOut";
constexpr char keptKey[] = "kept";

// By the value of JournalEntry::Kept.
constexpr std::array<const char*, 3> keptNames = {"all", "allButFormerImages", "frame"};

template <typename T, typename Write>
PropertyListArray arrayOf(const std::vector<T>& elements, const Write& write) {
  PropertyListArray array;
  array.reserve(elements.size());
  for (const T& element : elements) array.emplace_back(write(element));
  return array;
}

// The elements of the array under `key`; nothing when there is none or one of them cannot be read.
template <typename T, typename Read>
std::optional<std::vector<T>> elementsOf(const PropertyListDictionary& entries, const char* key,
                                         const Read& read) {
  const PropertyList* found = findEntry(entries, key);
  if (!found || !found->array()) return std::nullopt;
  std::vector<T> elements;
  elements.reserve(found->array()->size());
  for (const PropertyList& object : *found->array()) {
    std::optional<T> element = read(object);
    if (!element) return std::nullopt;
    elements.push_back(*std::move(element));
  }
  return elements;
}

PropertyListDictionary writeRecord(const DonationValuePtr& record) {
  return record->propertyListRepresentation();
}

std::optional<DonationValuePtr> readRecord(const PropertyList& object) {
  if (!object.dictionary()) return std::nullopt;
  DonationValuePtr record = DonationValue::initWithPropertyListRepresentation(*object.dictionary());
  if (!record) return std::nullopt;
  return record;
}

PropertyListDictionary writeSkipped(const SkippedEntry& skipped) {
  return {{propertyKey, skipped.property}, {lineKey, static_cast<std::int64_t>(skipped.line)}};
}

std::optional<SkippedEntry> readSkipped(const PropertyList& object) {
  if (!object.dictionary()) return std::nullopt;
  const std::string* property = findString(*object.dictionary(), propertyKey);
  const PropertyList* line = findEntry(*object.dictionary(), lineKey);
  if (!property || !line || !line->integer() || *line->integer() < 0) return std::nullopt;
  return SkippedEntry{*property, static_cast<std::size_t>(*line->integer())};
}

PropertyListDictionary writeFile(const DonatedFile& file) {
  return {{pseudonymKey, file.pseudonym},
          {bundleKey, file.bundleIdentifier},
          {donatedKey, arrayOf(file.donated, &writeRecord)},
          {skippedKey, arrayOf(file.skipped, &writeSkipped)}};
}

std::optional<DonatedFile> readFile(const PropertyList& object) {
  const PropertyListDictionary* entries = object.dictionary();
  if (!entries) return std::nullopt;
  const std::string* pseudonym = findString(*entries, pseudonymKey);
  const std::string* bundle = findString(*entries, bundleKey);
  auto donated = elementsOf<DonationValuePtr>(*entries, donatedKey, &readRecord);
  auto skipped = elementsOf<SkippedEntry>(*entries, skippedKey, &readSkipped);
  if (!pseudonym || !bundle || !donated || !skipped) return std::nullopt;
  return DonatedFile{*pseudonym, *bundle, *std::move(donated), *std::move(skipped)};
}

std::optional<std::string> readText(const PropertyList& object) {
  if (!object.string()) return std::nullopt;
  return *object.string();
}

std::optional<JournalEntry::Kept> readKept(const PropertyListDictionary& entries) {
  const std::string* name = findString(entries, keptKey);
  for (std::size_t place = 0; name && place < keptNames.size(); ++place) {
    if (*name == keptNames[place]) return static_cast<JournalEntry::Kept>(place);
  }
  return std::nullopt;
}

}  // namespace

PropertyListDictionary JournalEntry::dictionaryRepresentation() const {
  return {{numberKey, number},
          {whenKey, when.secondsSince1970()},
          {filesKey, arrayOf(files, &writeFile)},
          {replacedKey, arrayOf(replaced, &writeRecord)},
          {leftOutKey, arrayOf(leftOut, [](const std::string& text) { return text; })},
          {keptKey, keptNames[static_cast<std::size_t>(kept)]}};
}

std::optional<JournalEntry> JournalEntry::entryWithDictionary(
    const PropertyListDictionary& entries) {
  const PropertyList* number = findEntry(entries, numberKey);
  const PropertyList* when = findEntry(entries, whenKey);
  auto files = elementsOf<DonatedFile>(entries, filesKey, &readFile);
  auto replaced = elementsOf<DonationValuePtr>(entries, replacedKey, &readRecord);
  auto leftOut = elementsOf<std::string>(entries, leftOutKey, &readText);
  const std::optional<Kept> kept = readKept(entries);
  if (!number || !number->integer() || !when || !when->real() || !files || !replaced || !leftOut ||
      !kept) {
    return std::nullopt;
  }
  return JournalEntry{*number->integer(),   Date(*when->real()), *std::move(files),
                      *std::move(replaced), *std::move(leftOut), *kept};
}

}  // namespace quenlet
