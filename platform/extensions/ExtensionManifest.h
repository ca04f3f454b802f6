#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "quenlet/Result.h"

namespace quenlet {

// A donor's manifest. Immutable once read.
struct ExtensionManifest final {
  static constexpr char agentExtensionPoint[] = "ovaro.quenlet";
  static constexpr char agentExtensionVersion[] = "1.0";
  static constexpr std::size_t maximumSizeInBytes = std::size_t{64} << 10;

  std::string bundleIdentifier;
  std::string extensionPoint;
  std::string version;
  // Absolute. Only manifests that are not for this agent may lack it.
  std::filesystem::path executable;
  // Where a catalog read it.
  std::filesystem::path file = {};

  // Whether it registers for this agent's extension point, in the version that the agent supports.
  [[nodiscard]] bool isDonorExtension() const;
  // Whether `file` is still there, so that the owner has not switched it off since.
  [[nodiscard]] bool isStillInstalled() const;

  // `directory` is the one of the manifest; a relative executable is relative to it. The error says
  // what is wrong with the manifest.
  [[nodiscard]] static Result<ExtensionManifest> read(std::string_view text,
                                                      const std::filesystem::path& directory);
};

using ExtensionManifestPtr = std::shared_ptr<const ExtensionManifest>;

}  // namespace quenlet
