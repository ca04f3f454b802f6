#include <cerrno>
#include <map>
#include <utility>

#include "donors/mail/MailIdentities.h"
#include "foreign/ForeignFiles.h"
#include "foreign/KeyFile.h"
#include "foreign/Mailbox.h"

namespace quenlet {
namespace {

constexpr char sourceGroup[] = "Data Source";
constexpr char identityGroup[] = "Mail Identity";
constexpr std::string_view extension = ".source";

// By their identifiers, which the files are named after.
using Sources = std::map<std::string, KeyFile>;

Result<KeyFile> parseSource(const std::string& text) {
  Result<KeyFile> source = KeyFile::parse(text);
  if (!source.ok() || source.value().hasGroup(sourceGroup)) return source;
  return Result<KeyFile>::failure(
      makeError(PosixErrorDomain, EINVAL, "it has no group \"Data Source\""));
}

ErrorPtr addSource(const std::filesystem::path& directory, const std::string& name,
                   Sources& sources) {
  if (!name.ends_with(extension)) return nullptr;
  const auto text = ForeignFiles::readLines(directory / name);
  if (!text.ok()) return text.error();
  if (!text.value()) return nullptr;
  Result<KeyFile> source = parseSource(*text.value());
  if (!source.ok()) return source.error();
  sources.emplace(name.substr(0, name.size() - extension.size()), std::move(source).takeValue());
  return nullptr;
}

// The source that this one belongs to, or null.
const KeyFile* parentOf(const KeyFile& source, const Sources& sources) {
  const auto parent = sources.find(source.text(sourceGroup, "Parent").value_or(""));
  return parent == sources.end() ? nullptr : &parent->second;
}

bool isUsed(const KeyFile& source, const Sources& sources) {
  const KeyFile* parent = parentOf(source, sources);
  if (source.isFalse(sourceGroup, "Enabled")) return false;
  return parent == nullptr ||
         (!parent->isFalse(sourceGroup, "Enabled") && !parent->hasGroup("GNOME Online Accounts"));
}

MailIdentity identityOf(const std::string& identifier, const KeyFile& source) {
  MailIdentity identity{identifier, source.text(identityGroup, "Name").value_or(""), {}};
  identity.mailboxes.push_back(source.text(identityGroup, "Address").value_or(""));
  for (std::string& alias : splitMailboxes(source.text(identityGroup, "Aliases").value_or(""))) {
    identity.mailboxes.push_back(std::move(alias));
  }
  return identity;
}

}  // namespace

MailIdentities evolutionIdentities(const UserPlaces& places) {
  const std::filesystem::path directory = places.configuration / "evolution/sources";
  const std::string where = "evolution/sources";
  const auto names = ForeignFiles::names(directory);
  if (!names.ok()) return MailIdentities::failure(ForeignFiles::locate(where, *names.error()));
  Sources sources;
  std::size_t number = 0;
  for (const std::string& name : names.value()) {
    ++number;
    if (const ErrorPtr error = addSource(directory, name, sources)) {
      return MailIdentities::failure(
          ForeignFiles::locate("file " + std::to_string(number) + " in " + where, *error));
    }
  }
  std::vector<MailIdentity> identities;
  for (const auto& [identifier, source] : sources) {
    if (!source.hasGroup(identityGroup) || !isUsed(source, sources)) continue;
    identities.push_back(identityOf(identifier, source));
  }
  return MailIdentities::success(std::move(identities));
}

}  // namespace quenlet
