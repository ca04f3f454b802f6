#pragma once

#include <memory>
#include <string>
#include <type_traits>

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

}  // namespace quenlet
