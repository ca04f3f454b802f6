#include <CLI/CLI.hpp>
#include <string>

#include "tools/commands/Command.h"
#include "tools/commands/DonationRemarks.h"
#include "tools/owner/OwnersDecisions.h"
#include "tools/owner/OwnersDonations.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

using Undone = OwnersDonations::Undone;

constexpr char undoFooter[] =
    "Values that the donation had replaced or removed are donated again, with their former origin\n"
    "and dates. Each further \"undo\" goes one donation back, at most 50. Other programs' "
    "donations,\n"
    "and what they gave in its place since, stay.";

// "com.example.mail and org.quenlet.file.0123456789abcdef"
std::string bundlesOf(const JournalEntry& entry) {
  std::string text;
  for (std::size_t place = 0; place < entry.files.size(); ++place) {
    if (place > 0) text += place + 1 == entry.files.size() ? " and " : ", ";
    text += entry.files[place].bundleIdentifier;
  }
  return text;
}

void tellRest(std::size_t number, const char* why, const Session& session) {
  if (number == 0) return;
  session.say(counted(number, "former value does", "former values do") + " not come back: " + why);
}

ExitCode tell(const Undone& undone, const Session& session) {
  const std::string donation =
      "the donation of " + undone.entry.when.iso8601() + " as " + bundlesOf(undone.entry);
  if (undone.entry.kept == JournalEntry::Kept::frame) {
    const ExitCode code = session.failWith(makeError(
        GeneralErrorDomain, 0, donation + " is too large to be taken back, and is passed over"));
    session.hint("\"quenlet forget BUNDLE\" takes back all that a donor gave");
    return code;
  }
  session.say("Took back " + donation + ": " + counted(undone.removed, "value") + " removed, " +
              numberText(undone.restored) + " restored.");
  const std::size_t decided = countDecided(undone.leftOut);
  tellRest(decided, "rejected since", session);
  tellRest(undone.leftOut.size() - decided, notTaken, session);
  tellRest(undone.expired, "expired since", session);
  tellRest(undone.changed, "another donor has given something in its place since", session);
  if (undone.entry.kept == JournalEntry::Kept::allButFormerImages) {
    session.out << "A former image does not come back: it was too large to keep.\n";
  }
  return ExitCode::done;
}

// "undo": takes back the last donation of this program. Stateless.
class UndoWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] static ExitCode run(Session& session);
};

void UndoWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("undo", "Take back the last \"donate\"");
  word->footer(undoFooter);
  word->callback([&chosen] { chosen = &UndoWord::run; });
}

ExitCode UndoWord::run(Session& session) {
  const Result<DonationJournal> journal = DonationJournal::open();
  if (!journal.ok()) return session.failWith(journal.error());
  const auto undone = OwnersDonations(session.agent, journal.value(), session.now).undo();
  if (!undone.ok()) return session.failWith(undone.error());
  if (undone.value()) return tell(*undone.value(), session);
  return session.failWith(
      makeError(GeneralErrorDomain, 0, "this program has no donation to take back"));
}

}  // namespace

CommandPtr makeUndoWord() { return std::make_unique<UndoWord>(); }

}  // namespace quenlet
