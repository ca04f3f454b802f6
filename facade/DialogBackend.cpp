#include "facade/DialogBackend.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <system_error>

#include "foreign/ForeignFiles.h"
#include "foreign/KeyFile.h"
#include "foreign/UserPlaces.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

constexpr char accessInterface[] = "org.freedesktop.impl.portal.Access";
constexpr std::size_t mostFiles = 256;
constexpr std::size_t mostBytesInFile = 65536;

using Words = std::vector<std::string>;
// By the names of their files, without the ending.
using Installed = std::map<std::string, DialogBackend>;

Words split(std::string_view text, char separator) {
  Words parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    if (end > 0) parts.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

bool isAmongWords(const Words& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::optional<KeyFile> readKeyFile(const std::filesystem::path& file) {
  // Some systems install nothing but links.
  std::error_code failure;
  const auto place = std::filesystem::canonical(file, failure);
  if (failure) return std::nullopt;
  const auto text = ForeignFiles::read(place);
  if (!text.ok() || !text.value() || text.value()->size() > mostBytesInFile) return std::nullopt;
  auto read = KeyFile::parse(*text.value());
  return read.ok() ? std::optional(std::move(read).takeValue()) : std::nullopt;
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

std::optional<DialogBackend> backendIn(const KeyFile& file, const Words& desktops) {
  const auto name = file.text("portal", "DBusName");
  if (!name || !isAmongWords(file.list("portal", "Interfaces", ';'), accessInterface)) {
    return std::nullopt;
  }
  DialogBackend backend{*name};
  for (const std::string& user : file.list("portal", "UseIn", ';')) {
    backend.isOfThisDesktop |= isAmongWords(desktops, lowercased(user));
  }
  return backend;
}

Installed installedBackends(const DialogPlaces& places, const Words& desktops) {
  Installed installed;
  for (const auto& directory : places.programs) {
    for (const std::string& name : sortedNames(directory)) {
      const auto file = readKeyFile(directory / name);
      const auto backend = file ? backendIn(*file, desktops) : std::nullopt;
      if (backend) installed.emplace(std::filesystem::path(name).stem(), *backend);
    }
  }
  return installed;
}

// The names of the programs for the interface; nothing when no configuration says.
std::optional<Words> configuredNames(const DialogPlaces& places, const Words& desktops) {
  Words names;
  for (const std::string& desktop : desktops) names.push_back(desktop + "-portals.conf");
  names.emplace_back("portals.conf");
  for (const auto& directory : places.configurations) {
    for (const std::string& name : names) {
      const auto file = readKeyFile(directory / name);
      if (!file) continue;
      for (const char* key : {accessInterface, "default"}) {
        if (file->text("preferred", key)) return file->list("preferred", key, ';');
      }
      return std::nullopt;
    }
  }
  return std::nullopt;
}

// Those that are installed. Nothing when none is, unless the configuration asks for none.
std::optional<std::vector<DialogBackend>> backendsOfNames(const Words& names,
                                                          const Installed& installed) {
  std::vector<DialogBackend> backends;
  for (const std::string& name : names) {
    if (name == "none") return backends;
    for (const auto& [known, backend] : installed) {
      if (name == known || name == "*") backends.push_back({backend.busName, true});
    }
  }
  return backends.empty() ? std::nullopt : std::optional(std::move(backends));
}

std::string environment(const char* name, const char* otherwise) {
  const char* value = std::getenv(name);
  return value == nullptr || *value == '\0' ? otherwise : value;
}

}  // namespace

DialogPlaces DialogPlaces::ofSession() {
  constexpr char below[] = "xdg-desktop-portal";
  DialogPlaces places{.desktop = environment("XDG_CURRENT_DESKTOP", "")};
  const auto addConfiguration = [&](const std::filesystem::path& base) {
    places.configurations.push_back(base / below);
  };
  const auto user = UserPlaces::ofProcess();
  if (user.ok()) addConfiguration(user.value().configuration);
  for (const std::string& base : split(environment("XDG_CONFIG_DIRS", "/etc/xdg"), ':')) {
    addConfiguration(base);
  }
  addConfiguration("/etc");
  if (user.ok()) {
    addConfiguration(environment("XDG_DATA_HOME", (user.value().home / ".local/share").c_str()));
  }
  for (const std::string& base :
       split(environment("XDG_DATA_DIRS", "/usr/local/share:/usr/share"), ':')) {
    addConfiguration(base);
    places.programs.push_back(std::filesystem::path(base) / below / "portals");
  }
  return places;
}

std::vector<DialogBackend> dialogBackends(const DialogPlaces& places) {
  const Words desktops = split(lowercased(places.desktop), ':');
  const Installed installed = installedBackends(places, desktops);
  if (const auto names = configuredNames(places, desktops)) {
    if (auto backends = backendsOfNames(*names, installed)) return *std::move(backends);
  }
  std::vector<DialogBackend> backends;
  for (const auto& entry : installed) backends.push_back(entry.second);
  std::stable_partition(backends.begin(), backends.end(),
                        [](const DialogBackend& backend) { return backend.isOfThisDesktop; });
  return backends;
}

std::vector<DialogBackend> dialogBackendsOfSession() {
  return dialogBackends(DialogPlaces::ofSession());
}

}  // namespace quenlet
