#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/extensions/ExtensionManifest.h"
#include "platform/extensions/ManifestDirectory.h"
#include "quenlet/Result.h"

namespace quenlet {

// A donor extension that is installed and asked for nothing until the owner switches it on; or one
// that was switched on so and is not installed any more. A value type.
struct AvailableExtension final {
  std::string name;                // the manifest's file without its ending
  std::string group;               // may be empty
  std::vector<std::string> reads;  // which files, in words for people
  ExtensionManifest manifest;
};

// A manifest that cannot be read. A value type.
struct DamagedExtension final {
  std::string name;
  ErrorPtr error;
};

// The extensions below a prefix that can be switched on, and the user's directory of manifests, in
// which those that are on have one. One thread.
class AvailableExtensions final {
 public:
  // What stands under the extension's name in the user's directory.
  enum class Place { free, ours, othersFile };

  // Those of the program's own installation. An error when the user has no home.
  [[nodiscard]] static Result<AvailableExtensions> open();
  [[nodiscard]] static AvailableExtensions openIn(const std::filesystem::path& prefix,
                                                  const std::filesystem::path& home);

  // By name.
  [[nodiscard]] const std::vector<AvailableExtension>& all() const { return extensions; }
  // Manifests, or their directory, that are damaged or can be written by others. They are not among
  // the others.
  [[nodiscard]] const std::vector<DamagedExtension>& damaged() const { return damagedOnes; }
  // Those with that name, or of that group.
  [[nodiscard]] std::vector<AvailableExtension> named(const std::string& word) const;
  // All directories in which the agent finds manifests.
  [[nodiscard]] const std::vector<ManifestDirectory>& directories() const { return agents; }

  [[nodiscard]] std::filesystem::path fileOf(const AvailableExtension& extension) const;
  // An error when it cannot be told.
  [[nodiscard]] Result<Place> placeOf(const AvailableExtension& extension) const;
  // Writes a manifest for the agent, durably, with the name and remarks, so that it can be switched
  // off without the installed one. Never over another file: an error with code EEXIST then.
  [[nodiscard]] ErrorPtr enable(const AvailableExtension& extension) const;
  // Removes that manifest, durably, if it is one of the extension's.
  [[nodiscard]] ErrorPtr disable(const AvailableExtension& extension) const;

 private:
  explicit AvailableExtensions(std::vector<ManifestDirectory> agentDirectories)
      : agents(std::move(agentDirectories)) {}

  void addAvailable(const std::filesystem::path& prefix);
  void addForsaken();
  [[nodiscard]] bool hasBundle(const std::string& bundleIdentifier) const;

  std::vector<AvailableExtension> extensions;
  std::vector<DamagedExtension> damagedOnes;
  std::vector<ManifestDirectory> agents;
};

}  // namespace quenlet
