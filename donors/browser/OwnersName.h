#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "foreign/UserPlaces.h"
#include "quenlet/Values.h"

namespace quenlet {

// By what name the owner is known before anything is donated, to tell their records from other
// people's. Immutable.
class OwnersName final {
 public:
  // That of the owner's own card, or without one of the system's user database. It is unknown when
  // neither has both a given and a family name. An error when the card cannot be read: what it says
  // is not known then.
  [[nodiscard]] static Result<OwnersName> find(const UserPlaces& places);
  // As typed; unknown unless it has both a given and a family name.
  explicit OwnersName(std::string_view fullName);

  // Whether given and family name are the same, in any letter case; never for an unknown one.
  [[nodiscard]] bool isThatOf(const Name& name) const;

 private:
  explicit OwnersName(std::optional<Name> known);

  std::string given;  // both empty when unknown
  std::string family;
};

}  // namespace quenlet
