#pragma once

#include <memory>
#include <string>

#include "platform/contacts/ValueOrigin.h"

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

  friend bool operator==(const LabeledValue&, const LabeledValue&) = default;
};

}  // namespace quenlet
