#include "tools/owner/DonationJournal.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <random>
#include <utility>

#include "client/Pseudonyms.h"
#include "platform/files/DonationFiles.h"
#include "platform/files/DurableDirectory.h"
#include "platform/files/LockFile.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/files/UserDirectories.h"
#include "platform/foundation/PropertyListSerializer.h"

namespace quenlet {
namespace {

constexpr char secretKey[] = "key";
constexpr char entriesKey[] = "donations";

std::optional<std::string> readKey(const PropertyListDictionary& contents) {
  const PropertyList* key = findEntry(contents, secretKey);
  if (!key || !key->data() || key->data()->bytes.size() != Pseudonyms::keySizeInBytes) {
    return std::nullopt;
  }
  return key->data()->bytes;
}

using Entries = std::vector<JournalEntry>;

// Nothing when the file holds something else in their place.
std::optional<Entries> entriesIn(const PropertyListDictionary& contents) {
  Entries entries;
  const PropertyList* donations = findEntry(contents, entriesKey);
  if (!donations) return entries;
  if (!donations->array()) return std::nullopt;
  for (const PropertyList& donation : *donations->array()) {
    if (!donation.dictionary()) return std::nullopt;
    auto entry = JournalEntry::entryWithDictionary(*donation.dictionary());
    if (!entry) return std::nullopt;
    entries.push_back(*std::move(entry));
  }
  return entries;
}

ErrorPtr makeDamageError() {
  return makeError(PropertyListErrorDomain, 0,
                   std::string(DonationJournal::fileName) + " is damaged: it holds no donations");
}

// The size of something that a property list cannot hold.
constexpr std::size_t noSize = std::numeric_limits<std::size_t>::max();

std::size_t sizeOf(const PropertyList& donation) {
  const Result<std::string> text = PropertyListSerializer::dataWithObject(donation);
  return text.ok() ? text.value().size() : noSize;
}

bool isLarger(const JournalEntry& entry, std::size_t mostBytes) {
  return sizeOf(entry.dictionaryRepresentation()) > mostBytes;
}

bool isImage(const DonationValuePtr& value) { return value->kind() == DonationKind::imageData; }

// Leaves out what is too large, and what undoing does not need.
void fit(JournalEntry& entry, std::size_t mostBytes) {
  for (DonatedFile& file : entry.files) {
    for (DonationValuePtr& value : file.donated) {
      if (!isImage(value)) continue;
      value = DonationValue::donationValueWithImageData({}, value->decoded().origin);
    }
  }
  if (!isLarger(entry, mostBytes)) return;
  entry.kept = JournalEntry::Kept::allButFormerImages;
  std::erase_if(entry.replaced, &isImage);
  if (!isLarger(entry, mostBytes)) return;
  entry.kept = JournalEntry::Kept::frame;
  entry.replaced.clear();
  entry.leftOut.clear();
  for (DonatedFile& file : entry.files) {
    file.donated.clear();
    file.skipped.clear();
  }
}

// Puts the entries in the file, without the oldest of too many or too much.
void write(const Entries& entries, DonationJournal::Bounds bounds,
           PropertyListDictionary& contents) {
  PropertyListArray donations;
  std::size_t bytes = 0;
  for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
    PropertyList donation = entry->dictionaryRepresentation();
    bytes += sizeOf(donation);
    if (donations.size() == bounds.entries || bytes > bounds.bytes) break;
    donations.push_back(std::move(donation));
  }
  std::reverse(donations.begin(), donations.end());
  contents.insert_or_assign(entriesKey, std::move(donations));
}

}  // namespace

DonationJournal::DonationJournal(const std::filesystem::path& donationsDirectory,
                                 std::shared_ptr<DataProxy> dataProxy)
    : DonationJournal(donationsDirectory, std::move(dataProxy), Bounds()) {}

DonationJournal::DonationJournal(const std::filesystem::path& donationsDirectory,
                                 std::shared_ptr<DataProxy> dataProxy, Bounds journalBounds)
    : file(donationsDirectory / fileName, std::move(dataProxy)), bounds(journalBounds) {}

Result<DonationJournal> DonationJournal::open() {
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Result<DonationJournal>::failure(home.error());
  return Result<DonationJournal>::success(
      DonationJournal(home.value() / DonationFiles::directory, std::make_shared<PosixDataProxy>()));
}

Result<std::vector<JournalEntry>> DonationJournal::entries() const {
  const Result<PropertyListDictionary> contents = file.read();
  if (!contents.ok()) return Result<Entries>::failure(contents.error());
  std::optional<Entries> entries = entriesIn(contents.value());
  if (!entries) return Result<Entries>::failure(makeDamageError());
  return Result<Entries>::success(*std::move(entries));
}

Result<std::optional<std::string>> DonationJournal::knownKey() const {
  using Known = Result<std::optional<std::string>>;
  const Result<PropertyListDictionary> contents = file.read();
  return contents.ok() ? Known::success(readKey(contents.value()))
                       : Known::failure(contents.error());
}

std::string DonationJournal::newKey() {
  std::random_device source;
  std::string bytes;
  while (bytes.size() < Pseudonyms::keySizeInBytes) bytes += static_cast<char>(source());
  return bytes;
}

Result<bool> DonationJournal::setKey(const std::string& key) const {
  bool isKey = false;
  const ErrorPtr error = change(
      [&](PropertyListDictionary& contents) {
        isKey = readKey(contents) == key;
        const std::optional<Entries> entries = entriesIn(contents);
        if (isKey || !entries || !entries->empty()) return false;
        contents.insert_or_assign(secretKey, Data{key});
        isKey = true;
        return true;
      },
      PropertyListFile::OnDamage::fail);
  return error ? Result<bool>::failure(error) : Result<bool>::success(isKey);
}

Result<JournalEntry> DonationJournal::add(JournalEntry entry, const std::string& key) const {
  fit(entry, bounds.bytes);
  bool hasOtherKey = false;
  const ErrorPtr error = change(
      [&](PropertyListDictionary& contents) {
        hasOtherKey = readKey(contents).value_or(key) != key;
        if (hasOtherKey) return false;
        contents.insert_or_assign(secretKey, Data{key});
        std::optional<Entries> entries = entriesIn(contents);
        if (!entries) {
          file.keepDamagedFile();
          entries.emplace();
        }
        for (const JournalEntry& former : *entries) {
          entry.number = std::max(entry.number, former.number);
        }
        ++entry.number;
        entries->push_back(entry);
        write(*entries, bounds, contents);
        return true;
      },
      PropertyListFile::OnDamage::replaceFile);
  if (error) return Result<JournalEntry>::failure(error);
  if (hasOtherKey) {
    return Result<JournalEntry>::failure(
        makeError(GeneralErrorDomain, 0,
                  "another donation began the journal at the same time; donate again"));
  }
  return Result<JournalEntry>::success(std::move(entry));
}

ErrorPtr DonationJournal::setLeftOut(std::int64_t number,
                                     const std::vector<std::string>& donationIdentifiers) const {
  return changeEntries([&](std::vector<JournalEntry>& entries) {
    for (JournalEntry& entry : entries) {
      if (entry.number != number || entry.kept == JournalEntry::Kept::frame) continue;
      entry.leftOut = donationIdentifiers;
      fit(entry, bounds.bytes);
    }
  });
}

ErrorPtr DonationJournal::remove(std::int64_t number) const {
  return changeEntries([number](std::vector<JournalEntry>& entries) {
    std::erase_if(entries, [number](const JournalEntry& entry) { return entry.number == number; });
  });
}

ErrorPtr DonationJournal::erase() const {
  std::error_code failure;
  if (!std::filesystem::exists(path(), failure) && !failure) return nullptr;
  ErrorPtr error = change(
      [](PropertyListDictionary& contents) {
        PropertyListDictionary kept;
        if (auto key = readKey(contents)) kept.emplace(secretKey, Data{*std::move(key)});
        if (kept == contents) return false;
        contents = std::move(kept);
        return true;
      },
      PropertyListFile::OnDamage::fail);
  return error && error->domain() == PropertyListErrorDomain ? removeFile() : error;
}

ErrorPtr DonationJournal::removeFile() const {
  std::filesystem::path lockPath = path();
  lockPath += ".lock";
  const auto lock = LockFile::lock(lockPath);
  if (!lock.ok()) return lock.error();
  PosixFileOperations operations;
  // The file may be a link to the damaged one.
  std::error_code failure;
  std::filesystem::path target = std::filesystem::weakly_canonical(path(), failure);
  if (failure) target = path();
  for (const auto& file : {target, path()}) {
    std::filesystem::remove(file, failure);
    int error = failure.value();
    if (error == 0) error = DurableDirectory::synchronize(operations, DurableDirectory::of(file));
    if (error != 0) return makePosixError(error, std::string("remove ") + fileName);
  }
  return nullptr;
}

ErrorPtr DonationJournal::changeEntries(
    const std::function<void(std::vector<JournalEntry>& entries)>& edit) const {
  bool isDamaged = false;
  const ErrorPtr error = change(
      [&](PropertyListDictionary& contents) {
        std::optional<Entries> entries = entriesIn(contents);
        isDamaged = !entries;
        if (isDamaged) return false;
        edit(*entries);
        write(*entries, bounds, contents);
        return true;
      },
      PropertyListFile::OnDamage::fail);
  return isDamaged ? makeDamageError() : error;
}

ErrorPtr DonationJournal::change(const PropertyListFile::Change& change,
                                 PropertyListFile::OnDamage onDamage) const {
  const Result<bool> outcome = file.update(change, onDamage).result();
  return outcome.ok() ? nullptr : outcome.error();
}

}  // namespace quenlet
