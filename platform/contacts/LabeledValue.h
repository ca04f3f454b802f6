#pragma once

#include <memory>
#include <string>
#include <type_traits>

#include "platform/contacts/ValueOrigin.h"
#include "platform/foundation/Text.h"

namespace quenlet {

// The key under which an entry's store info holds where the entry comes from.
inline constexpr char ValueOriginKey[] = "valueOrigin";

// What is known of an entry besides its label and value. Entries that nobody donated have none.
struct StoreInfo final {
  std::shared_ptr<const ValueOrigin> valueOrigin;

  friend bool operator==(const StoreInfo& a, const StoreInfo& b) {
    if (!a.valueOrigin || !b.valueOrigin) return a.valueOrigin == b.valueOrigin;
    return *a.valueOrigin == *b.valueOrigin;
  }
};

// One entry of a contact's list: a label ("home"), a value and its store info. A value type, shared
// as an immutable object between contacts.
template <typename T>
struct LabeledValue final {
  std::string label;
  T value;
  StoreInfo storeInfo;

  // Labels, and values that are texts, by canonical equivalence.
  friend bool operator==(const LabeledValue& a, const LabeledValue& b) {
    if constexpr (std::is_same_v<T, std::string>) {
      if (!canonicallyEqual(a.value, b.value)) return false;
    } else if (!(a.value == b.value)) {
      return false;
    }
    return canonicallyEqual(a.label, b.label) && a.storeInfo == b.storeInfo;
  }
};

}  // namespace quenlet
