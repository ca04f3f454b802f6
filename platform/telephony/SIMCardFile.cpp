#include "platform/telephony/SIMCardFile.h"

#include <optional>
#include <utility>

#include "platform/foundation/PropertyListSerializer.h"
#include "platform/telephony/TelephonyFile.h"

namespace quenlet {
namespace {

// Nothing when there are too many elements, or one is malformed.
std::optional<SIMCardItems> itemsOfArray(const PropertyListArray& elements) {
  if (elements.size() > SIMCardFile::maximumItems) return std::nullopt;
  SIMCardItems items;
  for (const PropertyList& element : elements) {
    const PropertyListDictionary* entries = element.dictionary();
    const std::string* identifier = entries ? findString(*entries, "identifier") : nullptr;
    const std::string* value = entries ? findString(*entries, "value") : nullptr;
    if (!identifier || identifier->empty() || !value) return std::nullopt;
    items.push_back({*identifier, *value});
  }
  return items;
}

Result<SIMCardItems> itemsOfObject(const std::optional<PropertyList>& object) {
  if (!object) return Result<SIMCardItems>::success({});
  const PropertyListArray* elements = object->array();
  std::optional<SIMCardItems> items = elements ? itemsOfArray(*elements) : std::nullopt;
  if (items) return Result<SIMCardItems>::success(*std::move(items));
  return Result<SIMCardItems>::failure(TelephonyFile::damage(
      "the file is not an array of up to 1,000 dictionaries with the texts identifier and value"));
}

}  // namespace

SIMCardFile::SIMCardFile(std::filesystem::path file, std::shared_ptr<DataProxy> dataProxy)
    : file(std::move(file)),
      dataProxy(std::move(dataProxy)),
      problems(this->file.filename().string()) {}

Result<SIMCardItems> SIMCardFile::read() {
  using Items = Result<SIMCardItems>;
  const auto object = TelephonyFile::read(*dataProxy, file);
  Items items = object.ok() ? itemsOfObject(object.value()) : Items::failure(object.error());
  problems.setProblem(items.ok() ? nullptr : items.error());
  return items;
}

ErrorPtr SIMCardFile::write(const SIMCardItems& items) {
  PropertyListArray elements;
  for (const SIMCardItem& item : items) {
    elements.emplace_back(
        PropertyListDictionary{{"identifier", item.identifier}, {"value", item.value}});
  }
  Result<std::string> bytes = PropertyListSerializer::dataWithObject(std::move(elements));
  if (!bytes.ok()) return bytes.error();
  const Result<bool> written =
      dataProxy->writeData(std::move(bytes).takeValue(), file, WritingOptions::atomic).result();
  return written.ok() ? nullptr : written.error();
}

}  // namespace quenlet
