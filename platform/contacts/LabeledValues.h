#pragma once

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/contacts/ValueOrigin.h"
#include "platform/foundation/Text.h"

namespace quenlet {

// The key of an entry's origin in its store info.
inline constexpr char ValueOriginKey[] = "valueOrigin";

// Facts about an entry besides its label and value. Only donated entries have an origin.
struct StoreInfo final {
  std::shared_ptr<const ValueOrigin> valueOrigin;

  friend bool operator==(const StoreInfo& a, const StoreInfo& b) {
    if (!a.valueOrigin || !b.valueOrigin) return a.valueOrigin == b.valueOrigin;
    return *a.valueOrigin == *b.valueOrigin;
  }
};

// One entry of a contact's list: a label ("home"), a value and its store info. A value type;
// contacts share entries as immutable objects.
template <typename T>
struct LabeledValue final {
  std::string label;
  T value;
  StoreInfo storeInfo;

  // Compares labels, and values that are texts, by canonical equivalence.
  friend bool operator==(const LabeledValue& a, const LabeledValue& b) {
    if constexpr (std::is_same_v<T, std::string>) {
      if (!canonicallyEqual(a.value, b.value)) return false;
    } else if (!(a.value == b.value)) {
      return false;
    }
    return canonicallyEqual(a.label, b.label) && a.storeInfo == b.storeInfo;
  }
};

// Entries that are made only when they are read, for lists that are kept for long and seldom read.
// Implementations are immutable and thread-safe.
template <typename T>
class EntriesOnDemand {
 public:
  virtual ~EntriesOnDemand() = default;
  [[nodiscard]] virtual std::size_t size() const = 0;
  // The entry at `place`, which is below size(); made anew for each call.
  [[nodiscard]] virtual std::shared_ptr<const LabeledValue<T>> entryAt(std::size_t place) const = 0;
};

// The entries of one list of a contact, in order: either held, as shared immutable objects, or made
// on demand; a reader sees no difference. An entry from an iterator stays valid as long as the
// caller holds it. A value type.
template <typename T>
class LabeledValues final {
 public:
  using Entry = std::shared_ptr<const LabeledValue<T>>;

  class Iterator final {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;
    using pointer = const Entry*;
    using reference = Entry;

    Iterator(const LabeledValues& list, std::size_t index) : entries(&list), place(index) {}
    [[nodiscard]] Entry operator*() const { return entries->entryAt(place); }
    Iterator& operator++() {
      ++place;
      return *this;
    }
    friend bool operator==(const Iterator&, const Iterator&) = default;

   private:
    const LabeledValues* entries;
    std::size_t place;
  };

  LabeledValues() = default;
  LabeledValues(std::initializer_list<Entry> entries) : held(entries) {}
  explicit LabeledValues(std::shared_ptr<const EntriesOnDemand<T>> entries)
      : onDemand(std::move(entries)) {}

  [[nodiscard]] std::size_t size() const { return onDemand ? onDemand->size() : held.size(); }
  [[nodiscard]] bool empty() const { return size() == 0; }
  [[nodiscard]] Entry entryAt(std::size_t place) const {
    return onDemand ? onDemand->entryAt(place) : held[place];
  }
  [[nodiscard]] Entry front() const { return entryAt(0); }
  [[nodiscard]] Iterator begin() const { return {*this, 0}; }
  [[nodiscard]] Iterator end() const { return {*this, size()}; }

  // Both are only for a list that holds its entries.
  void reserve(std::size_t count) { held.reserve(count); }
  void append(Entry entry) { held.push_back(std::move(entry)); }

 private:
  std::vector<Entry> held;
  std::shared_ptr<const EntriesOnDemand<T>> onDemand;
};

}  // namespace quenlet
