#pragma once

#include <filesystem>
#include <set>
#include <vector>

#include "quenlet/Result.h"

namespace quenlet {

// The profiles of a Mozilla program. Stateless.
class MozillaProfiles final {
 public:
  using Paths = std::set<std::filesystem::path>;

  MozillaProfiles() = delete;

  // The directories that profiles.ini in each of `roots` names; none for a root without one. One
  // that was deleted is left out. An error, too, when one is missing and may be on another disk.
  [[nodiscard]] static Result<Paths> in(const std::vector<std::filesystem::path>& roots);
};

}  // namespace quenlet
