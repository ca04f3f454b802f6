#pragma once

#include <filesystem>

namespace quenlet {

// A directory of extension manifests. A value type.
struct ManifestDirectory final {
  // The first directory that nobody but root and the own user may be able to write: an install
  // prefix, a home, or a configuration directory. What lies above it is up to whoever chose it.
  std::filesystem::path base;
  // From there to the manifests, each part under the same condition: ".config/quenlet/extensions".
  std::filesystem::path below;

  [[nodiscard]] std::filesystem::path path() const { return base / below; }
};

}  // namespace quenlet
