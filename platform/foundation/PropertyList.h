#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "quenlet/Date.h"

namespace quenlet {

class PropertyList;

using PropertyListArray = std::vector<PropertyList>;
// Iterates in ascending byte order of its keys.
using PropertyListDictionary = std::map<std::string, PropertyList, std::less<>>;

// The bytes of a property list's data element: a type of its own, to tell them from text.
struct Data final {
  std::string bytes;
  friend bool operator==(const Data&, const Data&) = default;
};

// A tree of plain values: boolean, 64-bit integer, real, text (UTF-8), data, date, array,
// dictionary. A value type; equality is by type and value (integer 1 and real 1.0 differ).
class PropertyList final {
 public:
  using Storage = std::variant<bool, std::int64_t, double, std::string, Data, Date,
                               PropertyListArray, PropertyListDictionary>;

  // Implicit, so that a tree can be written as a literal.
  PropertyList(bool value) : storage(value) {}
  PropertyList(int value) : storage(std::int64_t{value}) {}
  PropertyList(std::int64_t value) : storage(value) {}
  PropertyList(double value) : storage(value) {}
  PropertyList(const char* text) : storage(std::string(text)) {}
  PropertyList(std::string text) : storage(std::move(text)) {}
  PropertyList(Data data) : storage(std::move(data)) {}
  PropertyList(Date date) : storage(date) {}
  PropertyList(PropertyListArray array) : storage(std::move(array)) {}
  PropertyList(PropertyListDictionary entries) : storage(std::move(entries)) {}

  // The value when it has that type, else null. No conversion between types.
  [[nodiscard]] const bool* boolean() const { return std::get_if<bool>(&storage); }
  [[nodiscard]] const std::int64_t* integer() const { return std::get_if<std::int64_t>(&storage); }
  [[nodiscard]] const double* real() const { return std::get_if<double>(&storage); }
  [[nodiscard]] const std::string* string() const { return std::get_if<std::string>(&storage); }
  [[nodiscard]] const Data* data() const { return std::get_if<Data>(&storage); }
  [[nodiscard]] const Date* date() const { return std::get_if<Date>(&storage); }
  [[nodiscard]] const PropertyListArray* array() const {
    return std::get_if<PropertyListArray>(&storage);
  }
  [[nodiscard]] const PropertyListDictionary* dictionary() const {
    return std::get_if<PropertyListDictionary>(&storage);
  }
  [[nodiscard]] const Storage& value() const { return storage; }

  friend bool operator==(const PropertyList&, const PropertyList&) = default;

 private:
  Storage storage;
};

// The entry under `key`, or null. The others also return null for an entry of another type.
[[nodiscard]] const PropertyList* findEntry(const PropertyListDictionary& entries,
                                            std::string_view key);
[[nodiscard]] const std::string* findString(const PropertyListDictionary& entries,
                                            std::string_view key);
[[nodiscard]] const PropertyListDictionary* findDictionary(const PropertyListDictionary& entries,
                                                           std::string_view key);
// Only for a dictionary whose entries are all strings.
[[nodiscard]] const PropertyListDictionary* findStringDictionary(
    const PropertyListDictionary& entries, std::string_view key);

}  // namespace quenlet
