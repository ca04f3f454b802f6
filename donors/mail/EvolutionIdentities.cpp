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
constexpr char mailAccountGroup[] = "Mail Account";
constexpr std::string_view extension = ".source";
// All sources are in memory together. A thousand times as much as people have.
constexpr std::size_t mostBytesTogether = std::size_t{8} << 20;

struct Source final {
  KeyFile content;
  std::size_t number;  // of the file
};

// By their identifiers, which the files are named after.
using Sources = std::map<std::string, Source>;

// A source without a group of its own would be for nothing.
ErrorPtr problemOf(const KeyFile& source) {
  if (!source.hasGroup(sourceGroup)) return damage("it has no group \"Data Source\"");
  return source.groups().size() < 2 ? damage("it lacks what all sources have") : nullptr;
}

bool isOfMail(const KeyFile& source) {
  return source.hasGroup(identityGroup) || source.hasGroup(mailAccountGroup);
}

// Null for a source of mail with all that the server and its clients always write, even when it is
// empty. Others may be written by administrators and other programs, who leave out what has a
// default.
ErrorPtr problemOfMail(const KeyFile& source) {
  const auto has = [&](const char* group, const char* key) {
    return source.text(group, key).has_value();
  };
  if (!has(sourceGroup, "Enabled") || !has(sourceGroup, "Parent")) {
    return damage("it lacks what all sources of mail have");
  }
  const bool isWhole = !source.hasGroup(identityGroup) ||
                       (has(identityGroup, "Address") && has(identityGroup, "Name"));
  return isWhole ? nullptr : damage("it lacks what all identities have");
}

class SourceReader final {
 public:
  explicit SourceReader(std::filesystem::path place) : directory(std::move(place)) {}

  // Skips files of other names.
  ErrorPtr add(const std::string& name, std::size_t number) {
    if (!name.ends_with(extension)) return nullptr;
    const auto text = ForeignFiles::readLines(directory / name);
    if (!text.ok()) return text.error();
    if (!text.value()) return nullptr;
    if (text.value()->size() > bytesLeft) {
      return makeError(PosixErrorDomain, EFBIG,
                       "with it, the files are larger than 8 MiB together");
    }
    bytesLeft -= text.value()->size();
    Result<KeyFile> source = KeyFile::parse(*text.value());
    if (!source.ok()) return source.error();
    if (ErrorPtr problem = problemOf(source.value())) return problem;
    sources.emplace(name.substr(0, name.size() - extension.size()),
                    Source{std::move(source).takeValue(), number});
    return nullptr;
  }

  Sources sources;

 private:
  const std::filesystem::path directory;
  std::size_t bytesLeft = mostBytesTogether;
};

// Whether an account has an identity whose file has lost it.
bool hasLostIdentity(const Sources& sources) {
  for (const auto& [identifier, source] : sources) {
    const auto identity =
        sources.find(source.content.text(mailAccountGroup, "IdentityUid").value_or(""));
    if (identity != sources.end() && !identity->second.content.hasGroup(identityGroup)) return true;
  }
  return false;
}

// The source that this one belongs to, or null.
const Source* parentOf(const KeyFile& source, const Sources& sources) {
  const auto parent = sources.find(source.text(sourceGroup, "Parent").value_or(""));
  return parent == sources.end() ? nullptr : &parent->second;
}

// A source of mail, or the parent of one, that lacks something, and the problem with it.
std::pair<const Source*, ErrorPtr> findProblem(const Sources& sources) {
  for (const auto& [identifier, source] : sources) {
    if (!isOfMail(source.content)) continue;
    for (const Source* each : {&source, parentOf(source.content, sources)}) {
      ErrorPtr problem = each == nullptr ? nullptr : problemOfMail(each->content);
      if (problem) return {each, std::move(problem)};
    }
  }
  return {};
}

bool isUsed(const KeyFile& source, const Sources& sources) {
  if (source.isFalse(sourceGroup, "Enabled")) return false;
  const Source* parent = parentOf(source, sources);
  return parent == nullptr || (!parent->content.isFalse(sourceGroup, "Enabled") &&
                               !parent->content.hasGroup("GNOME Online Accounts"));
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
  const auto fail = [](const std::string& place, const Error& error) {
    return MailIdentities::failure(ForeignFiles::locate(place, error));
  };
  const auto names = ForeignFiles::names(directory);
  if (!names.ok()) return fail(where, *names.error());
  const auto fileAt = [&](std::size_t number) {
    return "file " + std::to_string(number) + " in " + where;
  };
  SourceReader reader(directory);
  std::size_t number = 0;
  for (const std::string& name : names.value()) {
    ++number;
    if (const ErrorPtr error = reader.add(name, number)) return fail(fileAt(number), *error);
  }
  const Sources& sources = reader.sources;
  const auto [file, problem] = findProblem(sources);
  if (problem) return fail(fileAt(file->number), *problem);
  if (hasLostIdentity(sources)) return fail(where, *damage("an account's identity is not whole"));
  std::vector<MailIdentity> identities;
  for (const auto& [identifier, source] : sources) {
    const KeyFile& content = source.content;
    if (!content.hasGroup(identityGroup) || !isUsed(content, sources)) continue;
    identities.push_back(identityOf(identifier, content));
  }
  return MailIdentities::success(std::move(identities));
}

}  // namespace quenlet
