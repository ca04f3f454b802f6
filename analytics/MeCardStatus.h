#pragma once

#include <optional>

#include "analytics/MeCardFields.h"

namespace quenlet {

// Whether there is a card, and then what it carries. A value type.
class MeCardStatus final {
 public:
  [[nodiscard]] static MeCardStatus present(MeCardFields fields) { return MeCardStatus(fields); }
  [[nodiscard]] static MeCardStatus none() { return MeCardStatus(std::nullopt); }

  // What a present card carries; nothing when there is none.
  [[nodiscard]] const std::optional<MeCardFields>& fields() const { return carried; }

  friend bool operator==(const MeCardStatus&, const MeCardStatus&) = default;

 private:
  explicit MeCardStatus(std::optional<MeCardFields> fields) : carried(fields) {}
  std::optional<MeCardFields> carried;
};

}  // namespace quenlet
