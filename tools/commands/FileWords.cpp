#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdint>
#include <string>
#include <system_error>
#include <vector>

#include "platform/foundation/JSONWriter.h"
#include "platform/preferences/UserPreferences.h"
#include "tools/commands/Command.h"
#include "tools/owner/StoredData.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

using std::filesystem::path;

// With "~" for the home directory.
std::string shortPath(const path& file, const path& home) {
  const path below = file.lexically_relative(home);
  return below.empty() || *below.begin() == ".." ? file.string() : (path("~") / below).string();
}

const char* wordFor(FileKeeper keeper) {
  switch (keeper) {
    case FileKeeper::donations:
      return "donations";
    case FileKeeper::quenlet:
      return "quenlet";
    case FileKeeper::owner:
      return "owner";
    case FileKeeper::system:
      return "system";
  }
  return "";
}

// What is there of a file or directory.
struct Presence final {
  explicit Presence(const UserFile& file) {
    std::error_code failure;
    for (const path& present : UserFiles::present(file)) {
      ++files;
      isDirectory = std::filesystem::is_directory(present, failure);
      // A link counts as the file behind it, which is listed as well.
      if (!isDirectory && !std::filesystem::is_symlink(present, failure)) {
        const std::uintmax_t size = std::filesystem::file_size(present, failure);
        if (!failure) bytes += size;
      }
    }
  }
  [[nodiscard]] std::string text() const {
    if (files == 0) return "missing";
    if (isDirectory) return "directory";
    const std::string size = counted(bytes, "byte");
    return files == 1 ? size : size + " in " + counted(files, "file");
  }

  std::size_t files = 0;
  std::uintmax_t bytes = 0;
  bool isDirectory = false;
};

void writeText(const Session& session, const UserFiles& files) {
  for (const UserFile& file : files.all()) {
    session.out << session.screen.styled(file.purpose, TextStyle::bold) << "\n";
    const std::string where = shortPath(file.path, files.home()) + ": " + Presence(file).text();
    session.screen.writeParagraph(session.out, printable(where), 2, 2);
  }
}

void writeJSON(const Session& session, const UserFiles& files) {
  JSONWriter json;
  json.beginArray();
  for (const UserFile& file : files.all()) {
    const Presence presence(file);
    json.beginObject().key("path").value(file.path.string()).key("purpose").value(file.purpose);
    json.key("keeper").value(wordFor(file.keeper)).key("exists").value(presence.files > 0);
    json.key("files").value(static_cast<std::int64_t>(presence.files));
    json.key("bytes").value(static_cast<std::int64_t>(presence.bytes)).endObject();
  }
  session.out << json.endArray().text() << "\n";
}

std::vector<path> filesToRemove(const UserFiles& files) {
  std::vector<path> all = files.present(FileKeeper::donations);
  const std::vector<path> others = files.present(FileKeeper::quenlet);
  all.insert(all.end(), others.begin(), others.end());
  return all;
}

// "paths" and "reset": where everything is stored, and its end.
class FileWords final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode showPaths(Session& session) const;
  [[nodiscard]] ExitCode reset(Session& session) const;
  [[nodiscard]] static ExitCode removeAll(Session& session, const std::vector<path>& files);

  bool asJSON = false;
  bool isConfirmed = false;
};

void FileWords::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* paths = app.add_subcommand("paths", "Show where everything is stored; needs no agent");
  paths->add_flag("--json", asJSON, "As JSON, for programs");
  paths->callback(
      [this, &chosen] { chosen = [this](Session& session) { return showPaths(session); }; });

  CLI::App* word = app.add_subcommand("reset", "Remove all that was ever stored");
  word->add_flag("--yes", isConfirmed, "Do not ask");
  word->footer(
      "Removes donations, rejections, counts and preferences, and copies of damaged versions of\n"
      "them, but never your own card or your accounts. No agent may run.");
  word->callback([this, &chosen] { chosen = [this](Session& session) { return reset(session); }; });
}

ExitCode FileWords::showPaths(Session& session) const {
  const auto files = UserFiles::open();
  if (!files.ok()) return session.failWith(files.error());
  asJSON ? writeJSON(session, files.value()) : writeText(session, files.value());
  return ExitCode::done;
}

ExitCode FileWords::reset(Session& session) const {
  const auto stored = StoredData::open();
  if (!stored.ok()) return session.failWith(stored.error());
  const auto lock = stored.value().lockAgentOut();
  if (!lock.ok()) {
    if (lock.error()->code() != EWOULDBLOCK) return session.failWith(lock.error());
    return session.refuse(
        "not-possible", "an agent runs, and would write its files again",
        Advice::command("stop it first: systemctl --user stop quenlet-agent.socket quenlet-agent"));
  }
  const std::vector<path> all = filesToRemove(stored.value().userFiles());
  if (all.empty()) {
    session.out << "Nothing is stored.\n";
    return ExitCode::done;
  }
  session.err << "This removes for good:\n";
  for (const path& file : all) {
    session.err << "  " << printable(shortPath(file, stored.value().userFiles().home())) << "\n";
  }
  const ExitCode answer = session.ask(isConfirmed, "remove " + counted(all.size(), "file") + "?");
  return answer == ExitCode::done ? removeAll(session, all) : answer;
}

ExitCode FileWords::removeAll(Session& session, const std::vector<path>& files) {
  const auto user = UserPreferences::open();
  if (!user.ok()) return session.failWith(user.error());
  const bool wereOn = user.value()->preferences().isDonationsEnabled();
  if (const ErrorPtr error = StoredData::remove(files)) return session.failWith(error);
  session.say("Removed " + counted(files.size(), "file") +
              ". Your own card and your accounts are as they were.");
  if (!wereOn) {
    session.say("Donations were off; without preferences they are on: quenlet disable");
  }
  return ExitCode::done;
}

}  // namespace

CommandPtr makeFileWords() { return std::make_unique<FileWords>(); }

}  // namespace quenlet
