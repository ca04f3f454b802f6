#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace quenlet {

class BusValue;
using BusValues = std::vector<BusValue>;
// An a{sv}, or any other dictionary whose keys are texts or object paths. Of equal keys the last
// one counts.
using BusDictionary = std::map<std::string, BusValue, std::less<>>;

// The path of an object: a type of its own, to tell it from text.
struct BusObjectPath final {
  std::string path;
  friend bool operator==(const BusObjectPath&, const BusObjectPath&) = default;
};

// An "ay".
struct BusBytes final {
  std::string bytes;
  friend bool operator==(const BusBytes&, const BusBytes&) = default;
};

struct BusStruct final {
  BusValues members;
  friend bool operator==(const BusStruct&, const BusStruct&) = default;
};

// An array. Dictionaries with other keys are arrays of structs of key and value.
struct BusList final {
  std::string elementSignature;
  BusValues elements;
  friend bool operator==(const BusList&, const BusList&) = default;
};

// A value in a message; what a variant holds stands for the variant. Bytes and 16-bit integers are
// read as 32-bit ones. There are no file descriptors: see BusConnection. A value type.
class BusValue final {
 public:
  using Storage =
      std::variant<bool, std::int32_t, std::uint32_t, std::int64_t, std::uint64_t, double,
                   std::string, BusObjectPath, BusBytes, BusStruct, BusList, BusDictionary>;

  // Implicit, so that a tree can be written as a literal.
  template <typename T>
  requires std::is_constructible_v<Storage, T> &&(!std::is_same_v<T, BusValue>)BusValue(T value)
      : storage(std::move(value)) {}
  BusValue(const char* text) : storage(std::string(text)) {}

  // Null when it is of another type.
  [[nodiscard]] const bool* boolean() const { return std::get_if<bool>(&storage); }
  [[nodiscard]] const double* real() const { return std::get_if<double>(&storage); }
  [[nodiscard]] const std::string* text() const { return std::get_if<std::string>(&storage); }
  [[nodiscard]] const std::string* objectPath() const;
  [[nodiscard]] const std::string* bytes() const;
  [[nodiscard]] const BusValues* members() const;
  [[nodiscard]] const BusValues* elements() const;
  [[nodiscard]] const BusDictionary* dictionary() const {
    return std::get_if<BusDictionary>(&storage);
  }
  // An integer of any width; nothing for other types and for what does not fit.
  [[nodiscard]] std::optional<std::int64_t> integer() const;
  // The elements, if it is an array of texts.
  [[nodiscard]] std::optional<std::vector<std::string>> texts() const;

  // The type as which it goes into a variant.
  [[nodiscard]] std::string signature() const;
  [[nodiscard]] const Storage& value() const { return storage; }

  friend bool operator==(const BusValue&, const BusValue&) = default;

 private:
  Storage storage;
};

// The bytes of all texts and byte arrays in it, keys included.
[[nodiscard]] std::size_t sizeInBytes(const BusValues& values);

// An "as".
[[nodiscard]] BusValue makeTexts(const std::vector<std::string>& texts);
// An "aa{sv}".
[[nodiscard]] BusValue makeDictionaries(std::vector<BusDictionary> dictionaries);

// The entry under `key`, or null. The others also return null for an entry of another type.
[[nodiscard]] const BusValue* findEntry(const BusDictionary& entries, std::string_view key);
[[nodiscard]] const std::string* findText(const BusDictionary& entries, std::string_view key);
[[nodiscard]] const BusDictionary* findDictionary(const BusDictionary& entries,
                                                  std::string_view key);

}  // namespace quenlet
