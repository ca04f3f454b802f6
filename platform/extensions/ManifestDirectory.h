#pragma once

#include <filesystem>
#include <vector>

namespace quenlet {

// A directory of extension manifests. A value type.
struct ManifestDirectory final {
  // An install prefix, a home, or a configuration directory. Only root and the own user may be able
  // to write it. The directories above it are trusted.
  std::filesystem::path base;
  // The path from there to the manifests, such as ".config/quenlet/extensions"; the same condition
  // holds for each part.
  std::filesystem::path below;

  [[nodiscard]] std::filesystem::path path() const { return base / below; }

  // Those of an agent that runs below `prefix` for the user with that home, in the order in which
  // their manifests count: the installed ones, then the user's own.
  [[nodiscard]] static std::vector<ManifestDirectory> directoriesOf(
      const std::filesystem::path& prefix, const std::filesystem::path& home);
};

}  // namespace quenlet
