#pragma once

#include <optional>

#include "analytics/MeCardFields.h"

namespace quenlet {

// Whether there is a card, and if so, its fields. A value type.
class MeCardStatus final {
 public:
  [[nodiscard]] static MeCardStatus present(MeCardFields fields) { return MeCardStatus(fields); }
  [[nodiscard]] static MeCardStatus none() { return MeCardStatus(std::nullopt); }

  // Nothing when there is no card.
  [[nodiscard]] const std::optional<MeCardFields>& fields() const { return carried; }

  friend bool operator==(const MeCardStatus&, const MeCardStatus&) = default;

 private:
  explicit MeCardStatus(std::optional<MeCardFields> fields) : carried(fields) {}
  std::optional<MeCardFields> carried;
};

}  // namespace quenlet
