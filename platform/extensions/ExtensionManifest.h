#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "platform/foundation/Either.h"

namespace quenlet {

// What a donor's manifest says. Immutable once read.
struct ExtensionManifest final {
  static constexpr char agentExtensionPoint[] = "ovaro.quenlet";
  static constexpr char agentExtensionVersion[] = "1.0";
  static constexpr std::size_t maximumSizeInBytes = std::size_t{64} << 10;

  std::string bundleIdentifier;
  std::string extensionPoint;
  std::string version;
  // Absolute; empty only in manifests that are not for this agent.
  std::filesystem::path executable;

  // Whether it registers for this agent's extension point in the version that the agent speaks.
  [[nodiscard]] bool isDonorExtension() const;

  // `directory` is the manifest's own, for a relative executable. The error's sentence says what is
  // wrong with the manifest.
  [[nodiscard]] static Result<ExtensionManifest> read(std::string_view text,
                                                      const std::filesystem::path& directory);
};

using ExtensionManifestPtr = std::shared_ptr<const ExtensionManifest>;

}  // namespace quenlet
