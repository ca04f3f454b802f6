#include "platform/extensions/ManifestDirectory.h"

#include "platform/files/UserDirectories.h"

namespace quenlet {

std::vector<ManifestDirectory> ManifestDirectory::directoriesOf(const std::filesystem::path& prefix,
                                                                const std::filesystem::path& home) {
  const ManifestDirectory installed{prefix, "share/quenlet/extensions"};
  // Under the configuration directory, since confined programs may be able to write in Library.
  const std::filesystem::path extensions = "quenlet/extensions";
  if (const auto chosen = UserDirectories::chosenConfigurationDirectory()) {
    return {installed, {*chosen, extensions}};
  }
  return {installed, {home, UserDirectories::defaultConfiguration / extensions}};
}

}  // namespace quenlet
