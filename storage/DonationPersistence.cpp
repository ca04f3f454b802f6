#include "storage/DonationPersistence.h"

#include <concepts>

#include "model/DonationError.h"
#include "platform/files/DonationFiles.h"
#include "platform/files/FileReading.h"
#include "platform/files/UserDirectories.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "storage/DonationsText.h"

namespace quenlet {
namespace {

Result<std::filesystem::path> donationsDirectory() {
  return UserDirectories::expandTilde("~/" + std::string(DonationFiles::directory));
}

Result<std::filesystem::path> fileLocation(const char* name) {
  Result<std::filesystem::path> directory = donationsDirectory();
  if (!directory.ok()) return directory;
  return Result<std::filesystem::path>::success(directory.value() / name);
}

// A result whose empty state stands for a file that cannot be read.
template <typename T>
concept emptyInitializable = std::default_initializable<T> && requires(const T& result) {
  { result.empty() } -> std::convertible_to<bool>;
};

// The content of a file's dictionary, and whether all of it could be read.
template <emptyInitializable T>
struct Reading final {
  T result{};
  bool complete = true;
};

template <emptyInitializable T>
using Interpretation = Reading<T> (*)(const PropertyListDictionary&);

// Reads a file's bytes without the general reader; nothing when that has to be asked.
template <typename T>
using Shortcut = std::optional<T> (*)(std::string_view);

template <typename T>
std::optional<T> noShortcut(std::string_view) {
  return std::nullopt;
}

Result<PropertyList> parseDictionary(const std::string& bytes) {
  Result<PropertyList> parsed = PropertyListSerializer::objectWithData(bytes);
  if (parsed.ok() && !parsed.value().dictionary()) {
    return Result<PropertyList>::failure(makeDonationError(
        DonationErrorCode::topLevelNotADictionary, "the file's top level is not a dictionary"));
  }
  return parsed;
}

// Reads one file. A missing file is empty. So is a damaged one, after it was kept, and one that the
// system does not hand out: its bytes may be sound, so it stays until the next write keeps it.
template <emptyInitializable T>
Future<T> load(const std::shared_ptr<DataProxy>& dataProxy, const char* name,
               Interpretation<T> interpret, Shortcut<T> shortcut = &noShortcut<T>) {
  const Result<std::filesystem::path> url = fileLocation(name);
  if (!url.ok()) return Future<T>::futureWithResult(T{});
  return dataProxy->dataWithContentsOfURL(url.value())
      .flatMap([interpret, shortcut, dataProxy, path = url.value()](const std::string& bytes) {
        if (std::optional<T> result = shortcut(bytes)) {
          return Future<T>::futureWithResult(*std::move(result));
        }
        const Result<PropertyList> parsed = parseDictionary(bytes);
        if (!parsed.ok()) return Future<T>::futureWithError(parsed.error());
        Reading<T> reading = interpret(*parsed.value().dictionary());
        if (!reading.complete) dataProxy->keepDamagedFile(path);
        return Future<T>::futureWithResult(std::move(reading.result));
      })
      .recover([dataProxy, path = url.value()](const ErrorPtr& error) {
        if (error->domain() != PosixErrorDomain) {
          dataProxy->keepDamagedFile(path);
        } else if (!isMissingFile(*error)) {
          dataProxy->keepUnreadFile(path);
        }
        return Future<T>::futureWithResult(T{});
      });
}

// The dictionaries under "donations", each converted by `read`, whose result is false for an
// element that it cannot read.
template <typename T, typename Read>
Reading<std::vector<T>> readElements(const PropertyListDictionary& contents, Read read) {
  Reading<std::vector<T>> reading;
  const PropertyList* entry = findEntry(contents, DonationFiles::donationsKey);
  const PropertyListArray* elements = entry ? entry->array() : nullptr;
  if (!elements) return {{}, false};
  for (const PropertyList& element : *elements) {
    if (!element.dictionary()) return {{}, false};
  }
  reading.result.reserve(elements->size());
  for (const PropertyList& element : *elements) {
    if (auto value = read(*element.dictionary())) {
      if constexpr (std::is_same_v<T, DonationValue::Value>) {
        reading.result.push_back(std::move(*value));
      } else {
        reading.result.push_back(std::move(value));
      }
    } else {
      reading.complete = false;
    }
  }
  return reading;
}

Reading<DonationValues> readDonations(const PropertyListDictionary& contents) {
  return readElements<DonationValuePtr>(contents,
                                        &DonationValue::initWithPropertyListRepresentation);
}

Reading<std::vector<DonationValue::Value>> readRejections(const PropertyListDictionary& contents) {
  return readElements<DonationValue::Value>(contents, &DonationValue::Value::valueWithDictionary);
}

Reading<ExtensionVersions> readVersions(const PropertyListDictionary& contents) {
  Reading<ExtensionVersions> reading;
  const PropertyListDictionary* versions = findDictionary(contents, DonationFiles::versionsKey);
  if (!versions) return {{}, false};
  for (const auto& [bundleIdentifier, version] : *versions) {
    if (const std::int64_t* number = version.integer()) {
      reading.result.emplace(bundleIdentifier, *number);
    } else {
      reading.complete = false;
    }
  }
  return reading;
}

}  // namespace

Future<DonationValues> DonationPersistence::loadDonations() {
  return load<DonationValues>(dataProxy, DonationFiles::donations, &readDonations,
                              &DonationsText::read);
}

Future<std::vector<DonationValue::Value>> DonationPersistence::loadRejections() {
  return load<std::vector<DonationValue::Value>>(dataProxy, DonationFiles::rejections,
                                                 &readRejections);
}

Future<ExtensionVersions> DonationPersistence::loadExtensionVersions() {
  return load<ExtensionVersions>(dataProxy, DonationFiles::bundleVersions, &readVersions);
}

Future<bool> DonationPersistence::storeWithAllValues(
    const std::shared_ptr<const DonationValues>& values) {
  const Result<std::filesystem::path> url = fileLocation(DonationFiles::donations);
  if (!url.ok()) return Future<bool>::futureWithError(url.error());
  Result<FileContentPtr> text = DonationsText::of(values);
  if (!text.ok()) return Future<bool>::futureWithError(text.error());
  return store(url.value(), std::move(text).takeValue());
}

Future<bool> DonationPersistence::storeWithExtensionVersions(const ExtensionVersions& versions) {
  const Result<std::filesystem::path> url = fileLocation(DonationFiles::bundleVersions);
  if (!url.ok()) return Future<bool>::futureWithError(url.error());
  PropertyListDictionary entries;
  for (const auto& [bundleIdentifier, version] : versions) {
    entries.emplace(bundleIdentifier, version);
  }
  PropertyListDictionary contents;
  contents.emplace(DonationFiles::versionsKey, std::move(entries));
  return storeAsPlistWithUrl(url.value(), std::move(contents));
}

Future<bool> DonationPersistence::storeAsPlistWithUrl(const std::filesystem::path& url,
                                                      PropertyListDictionary value) {
  Result<std::string> text = PropertyListSerializer::dataWithObject(std::move(value));
  if (text.ok()) {
    return store(url, std::make_shared<const TextContent>(std::move(text).takeValue()));
  }
  // One sentence for everything that the form cannot hold: the real one may quote a name that a
  // donor chose.
  return Future<bool>::futureWithError(
      makeDonationError(DonationErrorCode::notSerializable, "a value cannot be serialised"));
}

std::size_t DonationPersistence::capacityInBytes() const {
  return DonationsText::capacityInBytes();
}

void DonationPersistence::keepStoredDonations() {
  const Result<std::filesystem::path> url = fileLocation(DonationFiles::donations);
  if (url.ok()) dataProxy->keepDamagedFile(url.value());
}

Future<bool> DonationPersistence::store(const std::filesystem::path& url, FileContentPtr content) {
  return dataProxy->writeContent(std::move(content), url, WritingOptions::atomic)
      .flatMap([self = *this](bool) {
        self.excludeFromBackups();
        return Future<bool>::futureWithResult(true);
      });
}

void DonationPersistence::excludeFromBackups() const {
  const Result<std::filesystem::path> directory = donationsDirectory();
  if (directory.ok()) {
    static_cast<void>(dataProxy->setExcludedFromBackups(directory.value()));
  }
}

}  // namespace quenlet
