#include "facade/DialogBackend.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <set>
#include <system_error>

#include "facade/KeyFileText.h"
#include "platform/files/FileReading.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

constexpr char accessInterface[] = "org.freedesktop.impl.portal.Access";
constexpr std::size_t mostFiles = 256;
constexpr std::uintmax_t mostBytesInFile = 65536;

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    if (end > 0) parts.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

std::set<std::string> sortedNames(const std::filesystem::path& directory) {
  std::set<std::string> names;
  std::error_code failure;
  std::filesystem::directory_iterator entries(directory, failure);
  for (; !failure && entries != std::filesystem::directory_iterator() && names.size() < mostFiles;
       entries.increment(failure)) {
    if (entries->path().extension() == ".portal") names.insert(entries->path().filename());
  }
  return names;
}

std::optional<DialogBackend> backendIn(std::string_view file,
                                       const std::vector<std::string>& desktops) {
  const auto name = keyFileText(file, "portal", "DBusName");
  const auto interfaces = keyFileText(file, "portal", "Interfaces");
  if (!name || !interfaces) return std::nullopt;
  const auto offered = split(*interfaces, ';');
  if (std::find(offered.begin(), offered.end(), accessInterface) == offered.end()) {
    return std::nullopt;
  }
  DialogBackend backend{*name};
  for (const std::string& user : split(keyFileText(file, "portal", "UseIn").value_or(""), ';')) {
    backend.isOfThisDesktop |=
        std::find(desktops.begin(), desktops.end(), lowercased(user)) != desktops.end();
  }
  return backend;
}

std::string environment(const char* name, const char* otherwise) {
  const char* value = std::getenv(name);
  return value == nullptr || *value == '\0' ? otherwise : value;
}

}  // namespace

std::vector<DialogBackend> dialogBackends(const std::vector<std::filesystem::path>& directories,
                                          std::string_view desktop) {
  const auto desktops = split(lowercased(desktop), ':');
  PosixDataProxy files;
  std::vector<DialogBackend> backends;
  for (const auto& directory : directories) {
    for (const std::string& name : sortedNames(directory)) {
      const auto text = readFileOfAtMost(mostBytesInFile, directory / name, files);
      const auto backend = text.ok() ? backendIn(text.value(), desktops) : std::nullopt;
      if (backend) backends.push_back(*backend);
    }
  }
  std::stable_partition(backends.begin(), backends.end(),
                        [](const DialogBackend& backend) { return backend.isOfThisDesktop; });
  return backends;
}

std::vector<DialogBackend> dialogBackendsOfSession() {
  std::vector<std::filesystem::path> directories;
  for (const std::string& data :
       split(environment("XDG_DATA_DIRS", "/usr/local/share:/usr/share"), ':')) {
    directories.push_back(std::filesystem::path(data) / "xdg-desktop-portal/portals");
  }
  return dialogBackends(directories, environment("XDG_CURRENT_DESKTOP", ""));
}

}  // namespace quenlet
