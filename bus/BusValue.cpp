#include "bus/BusValue.h"

#include <limits>
#include <type_traits>

namespace quenlet {
namespace {

struct SignatureOf final {
  std::string operator()(bool) const { return "b"; }
  std::string operator()(std::int32_t) const { return "i"; }
  std::string operator()(std::uint32_t) const { return "u"; }
  std::string operator()(std::int64_t) const { return "x"; }
  std::string operator()(std::uint64_t) const { return "t"; }
  std::string operator()(double) const { return "d"; }
  std::string operator()(const std::string&) const { return "s"; }
  std::string operator()(const BusObjectPath&) const { return "o"; }
  std::string operator()(const BusBytes&) const { return "ay"; }
  std::string operator()(const BusDictionary&) const { return "a{sv}"; }
  std::string operator()(const BusList& list) const { return "a" + list.elementSignature; }
  std::string operator()(const BusStruct& record) const {
    std::string signature = "(";
    for (const BusValue& member : record.members) signature += member.signature();
    return signature + ")";
  }
};

}  // namespace

const std::string* BusValue::objectPath() const {
  const auto* found = std::get_if<BusObjectPath>(&storage);
  return found == nullptr ? nullptr : &found->path;
}

const std::string* BusValue::bytes() const {
  const auto* found = std::get_if<BusBytes>(&storage);
  return found == nullptr ? nullptr : &found->bytes;
}

const BusValues* BusValue::members() const {
  const auto* found = std::get_if<BusStruct>(&storage);
  return found == nullptr ? nullptr : &found->members;
}

const BusValues* BusValue::elements() const {
  const auto* found = std::get_if<BusList>(&storage);
  return found == nullptr ? nullptr : &found->elements;
}

std::optional<std::int64_t> BusValue::integer() const {
  return std::visit(
      [](const auto& held) -> std::optional<std::int64_t> {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_integral_v<Held> && !std::is_same_v<Held, bool>) {
          if (std::in_range<std::int64_t>(held)) return static_cast<std::int64_t>(held);
        }
        return std::nullopt;
      },
      storage);
}

std::optional<std::vector<std::string>> BusValue::texts() const {
  const auto* list = std::get_if<BusList>(&storage);
  if (list == nullptr || list->elementSignature != "s") return std::nullopt;
  std::vector<std::string> texts;
  for (const BusValue& element : list->elements) {
    if (element.text() == nullptr) return std::nullopt;
    texts.push_back(*element.text());
  }
  return texts;
}

std::string BusValue::signature() const { return std::visit(SignatureOf{}, storage); }

namespace {

std::size_t sizeOfOne(const BusValue& value) {
  // What the library has of it is about as much again.
  std::size_t sum = 2 * sizeof(BusValue);
  for (const std::string* text : {value.text(), value.objectPath(), value.bytes()}) {
    if (text != nullptr) sum += 2 * text->size();
  }
  for (const BusValues* inner : {value.members(), value.elements()}) {
    if (inner != nullptr) sum += sizeInBytes(*inner);
  }
  if (value.dictionary() == nullptr) return sum;
  constexpr std::size_t node = 64;
  for (const auto& [key, held] : *value.dictionary()) {
    sum += node + 2 * key.size() + sizeOfOne(held);
  }
  return sum;
}

}  // namespace

std::size_t sizeInBytes(const BusValues& values) {
  std::size_t sum = 0;
  for (const BusValue& value : values) sum += sizeOfOne(value);
  return sum;
}

BusValue makeTexts(const std::vector<std::string>& texts) {
  return BusList{"s", BusValues(texts.begin(), texts.end())};
}

BusValue makeDictionaries(std::vector<BusDictionary> dictionaries) {
  BusList list{"a{sv}", {}};
  for (BusDictionary& dictionary : dictionaries) list.elements.emplace_back(std::move(dictionary));
  return list;
}

const BusValue* findEntry(const BusDictionary& entries, std::string_view key) {
  const auto found = entries.find(key);
  return found == entries.end() ? nullptr : &found->second;
}

const std::string* findText(const BusDictionary& entries, std::string_view key) {
  const BusValue* found = findEntry(entries, key);
  return found == nullptr ? nullptr : found->text();
}

const BusDictionary* findDictionary(const BusDictionary& entries, std::string_view key) {
  const BusValue* found = findEntry(entries, key);
  return found == nullptr ? nullptr : found->dictionary();
}

}  // namespace quenlet
