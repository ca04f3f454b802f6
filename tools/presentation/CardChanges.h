#pragma once

#include <memory>
#include <vector>

#include "model/Value.h"
#include "platform/contacts/Contact.h"

namespace quenlet {

// One value of a card and where it comes from.
struct WatchedEntry final {
  Value value;
  // Null for the name and the image.
  std::shared_ptr<const ValueOrigin> origin;
};

// In the card's order; its name first, its image last.
[[nodiscard]] std::vector<WatchedEntry> entriesOf(const Contact& card);

// How a card differs from an earlier one. A value type.
//
// An entry has changed when its donation now says something else, or has another span, or when its
// value now comes from another donation. The name and the image change, too.
struct CardChanges final {
  struct Change final {
    WatchedEntry from;
    WatchedEntry to;

    // Whether the same donation says the same, only for another span.
    [[nodiscard]] bool isRenewal() const;
  };

  std::vector<WatchedEntry> added;
  std::vector<WatchedEntry> removed;
  std::vector<Change> changed;

  [[nodiscard]] static CardChanges between(const Contact& before, const Contact& after);
  [[nodiscard]] bool empty() const { return added.empty() && removed.empty() && changed.empty(); }
};

}  // namespace quenlet
