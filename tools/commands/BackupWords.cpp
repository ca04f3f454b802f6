#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <string>

#include "client/InputText.h"
#include "tools/commands/Command.h"
#include "tools/commands/DonationRemarks.h"
#include "tools/owner/OwnersHome.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

// Several times what an agent and the files hold.
constexpr std::size_t mostBytes = std::size_t{256} << 20;

constexpr char exportFooter[] =
    "Writes a property list: the donations with their origins, the rejections, the accounts and\n"
    "your own card. It holds all your values: keep it where nobody else reads it. Without "
    "--output\n"
    "it goes to standard output. Needs the agent, which alone knows the donations.\n"
    "\n"
    "  quenlet export --output quenlet-backup.plist";

constexpr char importFooter[] =
    "Adds what the export has to what is there. Anything different in its place, such as another\n"
    "card of your own, is only overwritten with --replace; without it, nothing is changed then.";

// "export" and "import".
class BackupWords final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode takeBackup(Session& session) const;
  [[nodiscard]] ExitCode putInPlace(Session& session) const;
  [[nodiscard]] Result<Backup> read() const;

  std::string path;
  bool replaces = false;
  std::string output;
  bool replacesFile = false;
};

void BackupWords::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* taking = app.add_subcommand("export", "Write all that is yours, for a backup");
  taking->footer(exportFooter);
  CLI::Option* file =
      taking->add_option("--output", output, "Write to FILE, for you alone to read");
  file->type_name("FILE");
  taking->add_flag("--force", replacesFile, "Replace that file if it is there")->needs(file);
  taking->callback(
      [this, &chosen] { chosen = [this](Session& session) { return takeBackup(session); }; });

  CLI::App* putting = app.add_subcommand("import", "Put an export in place");
  putting->add_option("FILE", path, "What \"export\" wrote; - reads standard input")
      ->type_name("")
      ->required();
  putting->add_flag("--replace", replaces, "Overwrite what is different");
  putting->footer(importFooter);
  putting->callback(
      [this, &chosen] { chosen = [this](Session& session) { return putInPlace(session); }; });
}

ExitCode BackupWords::takeBackup(Session& session) const {
  if (output.empty() && ::isatty(STDOUT_FILENO) == 1) {
    return session.failWithUsage("an export is not for a terminal", {},
                                 Advice::command("quenlet export --output quenlet-backup.plist"));
  }
  const Result<OwnersHome> home = OwnersHome::open(session.agent, session.now);
  if (!home.ok()) return session.failWith(home.error());
  const Result<Backup> backup = home.value().backUp();
  if (!backup.ok()) return session.failWith(backup.error());
  const Result<std::string> text = backup.value().text();
  if (!text.ok()) return session.failWith(text.error());
  if (output.empty()) {
    session.out << text.value();
    return ExitCode::done;
  }
  const ExitCode code = session.writeFile(output, text.value(), replacesFile);
  if (code == ExitCode::done) session.say("Wrote " + output + ".");
  return code;
}

void tellImported(Session& session, const OwnersHome::Imported& imported) {
  session.say("Imported " + counted(imported.donations, "donation") + ", " +
              counted(imported.decisions, "decision") + " on values, " +
              counted(imported.accounts, "account") +
              (imported.ownCard ? " and your own card." : "."));
  if (imported.formerCard) {
    session.say("Your former card is kept: " + imported.formerCard->native());
  }
  if (imported.expired > 0) {
    session.say(counted(imported.expired, "donation") + " had expired.");
  }
  for (const std::string& reason : reasonsOf(imported.leftOut)) session.say(reason + ".");
  if (imported.hasOtherKey) {
    session.say(
        "Files were donated here before the import: a file that is in the export counts as a new "
        "one when it is donated again, and does not replace what was imported.");
    session.hint("quenlet list shows the bundles; quenlet forget BUNDLE takes one away");
  }
}

ExitCode BackupWords::putInPlace(Session& session) const {
  const Result<Backup> backup = read();
  if (!backup.ok()) return session.failWith(backup.error());
  const Result<OwnersHome> home = OwnersHome::open(session.agent, session.now);
  if (!home.ok()) return session.failWith(home.error());
  const auto conflicts = home.value().conflicts(backup.value());
  if (!conflicts.ok()) return session.failWith(conflicts.error());
  if (!conflicts.value().empty() && !replaces) {
    return session.failWithUsage("nothing was imported: something else is in the place of",
                                 firstOf(conflicts.value()), "--replace overwrites it");
  }
  const auto outcome = home.value().restore(backup.value());
  if (!outcome.ok()) {
    const ExitCode code = session.failWith(outcome.error());
    session.hint("import it again: what is in place already stays");
    return code;
  }
  if (!conflicts.value().empty()) session.say("Overwritten:");
  for (const std::string& line : firstOf(conflicts.value())) {
    session.screen.writeParagraph(session.out, printable(line), 2, 2);
  }
  tellImported(session, outcome.value());
  return ExitCode::done;
}

Result<Backup> BackupWords::read() const {
  const Result<std::string> bytes = readInput(path, mostBytes);
  if (!bytes.ok()) return Result<Backup>::failure(bytes.error());
  if (bytes.value().size() > mostBytes) {
    return Result<Backup>::failure(makePosixError(EFBIG, "read " + path));
  }
  Result<Backup> backup = Backup::read(bytes.value());
  if (backup.ok()) return backup;
  const Error& error = *backup.error();
  return Result<Backup>::failure(
      makeError(error.domain(), error.code(), path + ": " + error.debugDescription()));
}

}  // namespace

CommandPtr makeBackupWords() { return std::make_unique<BackupWords>(); }

}  // namespace quenlet
