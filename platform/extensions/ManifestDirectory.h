#pragma once

#include <filesystem>

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
};

}  // namespace quenlet
