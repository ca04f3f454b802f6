#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "model/DonationValue.h"
#include "platform/extensions/ExtensionCatalog.h"
#include "platform/ipc/EntitlementDatabase.h"
#include "platform/preferences/UserPreferences.h"
#include "tools/commands/Command.h"
#include "tools/owner/AgentDonations.h"
#include "tools/owner/DonationJournal.h"
#include "tools/owner/StoredData.h"
#include "tools/owner/UserAccounts.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

// The agent's donations, or the stored ones if it does not tell, and whether an agent runs.
struct Held final {
  DonationValues donations;
  bool agentRuns = true;
  // Files that no agent removes.
  std::vector<std::filesystem::path> copies = {};
  // Whether the journal has donations, as far as can be told.
  bool isNoted = false;

  [[nodiscard]] bool isEmpty() const { return donations.empty() && copies.empty() && !isNoted; }
};

// How the values of donors come back after all donations were deleted. A value type.
struct DonorReturn final {
  // With the number of their donations.
  std::size_t accounts = 0;    // read again by the agent
  std::size_t simCards = 0;    // donated when an agent starts
  std::size_t extensions = 0;  // asked again by the agent, as long as they are installed
  std::size_t others = 0;      // only their donors can donate them again
  std::vector<std::string> otherDonors = {};

  // Looks up which extensions are installed; reports damaged manifests on standard error.
  [[nodiscard]] static DonorReturn of(const DonationValues& donations,
                                      const std::filesystem::path& home);
  [[nodiscard]] std::size_t all() const { return accounts + simCards + extensions + others; }
};

DonorReturn DonorReturn::of(const DonationValues& donations, const std::filesystem::path& home) {
  const ExtensionCatalog catalog(
      ManifestDirectory::directoriesOf(EntitlementDatabase::prefixOfRunningProgram(), home));
  const auto installed = catalog.read();
  DonorReturn counts;
  DonationValues rest;
  for (const DonationValuePtr& donation : donations) {
    const std::string bundle = donation->decoded().origin.bundleIdentifier;
    const auto manifest = installed->manifest(bundle);
    if (bundle == AccountsBundleIdentifier) {
      ++counts.accounts;
    } else if (bundle == SIMCardBundleIdentifier) {
      ++counts.simCards;
    } else if (manifest.ok() && manifest.value()->isDonorExtension()) {
      ++counts.extensions;
    } else {
      rest.push_back(donation);
    }
  }
  counts.others = rest.size();
  counts.otherDonors = donorsOf(rest);
  return counts;
}

// "enable" and "disable": write the preference, which a running agent notices.
//
// Once it is off, an agent deletes all donations after 30 seconds. Without an agent nobody would,
// so the word deletes them itself, and has the next agent read the accounts anew.
class PreferenceWords final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] static ExitCode enable(Session& session);
  [[nodiscard]] ExitCode disable(Session& session) const;
  [[nodiscard]] static ExitCode deleteStored(const Session& session, const StoredData& stored,
                                             const DonationJournal& journal, const Held& held);

  bool isConfirmed = false;
};

void PreferenceWords::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* on = app.add_subcommand("enable", "Let donations be made; needs no agent");
  on->footer(
      "Within 30 seconds after \"quenlet disable\", while an agent runs, it keeps all donations.\n"
      "Later it has accounts and extensions asked for theirs.");
  on->callback([&chosen] { chosen = [](Session& session) { return enable(session); }; });

  CLI::App* off = app.add_subcommand("disable", "Refuse donations and delete all; needs no agent");
  off->add_flag("--yes", isConfirmed, "Do not ask");
  off->footer(
      "A running agent deletes all donations after 30 seconds, unless they are enabled before;\n"
      "without one they are deleted at once. Rejections, your own card and accounts stay.");
  off->callback(
      [this, &chosen] { chosen = [this](Session& session) { return disable(session); }; });
}

Result<Held> lookAtDonations(const Session& session, const StoredData& stored) {
  const auto list = donationsOf(session.agent);
  if (list.ok()) return Result<Held>::success({*list.value(), true});
  const bool agentRuns = !isNoAgent(*list.error());
  auto donations = stored.donations();
  if (donations.ok()) return Result<Held>::success({std::move(donations).takeValue(), agentRuns});
  // A damaged file is deleted like any other, only nobody can say what was in it.
  if (donations.error()->domain() == PosixErrorDomain) {
    return Result<Held>::failure(donations.error());
  }
  return Result<Held>::success({{}, agentRuns});
}

Result<Held> lookAt(const Session& session, const StoredData& stored,
                    const DonationJournal& journal) {
  Result<Held> looked = lookAtDonations(session, stored);
  if (!looked.ok()) return looked;
  Held held = std::move(looked).takeValue();
  held.copies = stored.copiesOfDonations();
  const auto entries = journal.entries();
  if (!entries.ok() && entries.error()->domain() == PosixErrorDomain) {
    return Result<Held>::failure(entries.error());
  }
  held.isNoted = !entries.ok() || !entries.value().empty();
  return Result<Held>::success(std::move(held));
}

void writeLine(const Session& session, std::size_t number, const std::string& what) {
  if (number > 0) session.tell(numberText(number) + " " + what, 2);
}

// What goes, whether it comes back, and how to keep it: only an agent gives an export, and only
// while donations are on.
void tellLoss(const Session& session, const Held& held, const std::filesystem::path& home,
              bool areEnabled) {
  const std::size_t copies = held.copies.size();
  const DonorReturn back = DonorReturn::of(held.donations, home);
  std::vector<std::string> gone;
  if (back.all() > 0) gone.push_back(counted(back.all(), "donation"));
  if (copies > 0) gone.push_back(counted(copies, "file"));
  if (!gone.empty()) session.tell("This deletes " + enumerated(gone) + ":");
  writeLine(session, back.others,
            "from " + enumerated(back.otherDonors) + ", who would have to donate them again");
  writeLine(session, back.extensions, "from extensions, which are asked again later");
  writeLine(session, back.accounts, "from your accounts, which are read again later");
  writeLine(session, back.simCards, "from SIM cards, which are read when the agent starts");
  writeLine(
      session, copies,
      copies == 1 ? "file that may show what was donated" : "files that may show what was donated");
  if (held.isNoted) {
    session.tell(
        "What quenlet donate has noted is deleted at once: undo can take nothing back then.");
  }
  if (back.all() == 0) return;
  session.tell(held.agentRuns
                   ? "The agent deletes them after 30 seconds; until then, quenlet enable "
                     "keeps them."
                   : "No agent runs: they are deleted at once.");
  std::vector<std::string> steps;
  if (!areEnabled) steps.emplace_back("run quenlet enable");
  if (!held.agentRuns) steps.emplace_back("start the agent");
  steps.emplace_back("run quenlet export --output FILE");
  session.tell("To keep them, first " + enumerated(steps) + ".");
}

// Deletes what no agent will delete. Whether an agent has turned up that deletes the rest.
Result<bool> deleteWithoutAgent(const StoredData& stored) {
  const auto lock = stored.lockAgentOut();
  if (!lock.ok()) {
    return lock.error()->code() == EWOULDBLOCK ? Result<bool>::success(true)
                                               : Result<bool>::failure(lock.error());
  }
  const ErrorPtr error = StoredData::remove(stored.filesOfDonations());
  return error ? Result<bool>::failure(error) : Result<bool>::success(false);
}

// Has the next agent read the accounts; a running one does so when donations come on.
ErrorPtr scheduleAccounts() {
  const auto accounts = UserAccounts::open();
  if (!accounts.ok()) return accounts.error();
  ErrorPtr error = accounts.value()->forgetWhatAgentHasRead();
  return error && error->code() == EWOULDBLOCK ? nullptr : error;
}

ExitCode PreferenceWords::disable(Session& session) const {
  const auto user = UserPreferences::open();
  if (!user.ok()) return session.failWith(user.error());
  const auto stored = StoredData::open();
  if (!stored.ok()) return session.failWith(stored.error());
  const auto journal = DonationJournal::open();
  if (!journal.ok()) return session.failWith(journal.error());
  const auto held = lookAt(session, stored.value(), journal.value());
  if (!held.ok()) return session.failWith(held.error());
  const bool areEnabled = user.value()->preferences().isDonationsEnabled();
  if (!held.value().isEmpty()) {
    tellLoss(session, held.value(), stored.value().userFiles().home(), areEnabled);
    const ExitCode answer = session.ask(isConfirmed, "turn donations off?");
    if (answer != ExitCode::done) return answer;
  } else if (!areEnabled) {
    session.out << "Donations were off already, and none is stored.\n";
    return ExitCode::done;
  }
  if (const ErrorPtr error = user.value()->preferences().setDonationsEnabled(false)) {
    return session.failWith(error);
  }
  return deleteStored(session, stored.value(), journal.value(), held.value());
}

ExitCode PreferenceWords::deleteStored(const Session& session, const StoredData& stored,
                                       const DonationJournal& journal, const Held& held) {
  bool agentRuns = held.agentRuns;
  if (!agentRuns) {
    const Result<bool> hasTurnedUp = deleteWithoutAgent(stored);
    if (!hasTurnedUp.ok()) return session.failWith(hasTurnedUp.error());
    agentRuns = hasTurnedUp.value();
  }
  if (const ErrorPtr error = StoredData::remove(held.copies)) return session.failWith(error);
  if (const ErrorPtr error = journal.erase()) return session.failWith(error);
  if (agentRuns) {
    session.out << "Donations are off. The agent deletes what it holds in 30 seconds.\n";
    return ExitCode::done;
  }
  if (const ErrorPtr error = scheduleAccounts()) return session.failWith(error);
  session.out << "Donations are off, and all stored donations are deleted.\n";
  return ExitCode::done;
}

ExitCode PreferenceWords::enable(Session& session) {
  const auto user = UserPreferences::open();
  if (!user.ok()) return session.failWith(user.error());
  const bool wasEnabled = user.value()->preferences().isDonationsEnabled();
  const auto list = donationsOf(session.agent);
  const bool agentRuns = list.ok() || !isNoAgent(*list.error());
  if (const ErrorPtr error = user.value()->preferences().setDonationsEnabled(true)) {
    return session.failWith(error);
  }
  if (wasEnabled) {
    session.out << "Donations were on already.\n";
  } else if (agentRuns) {
    session.say(
        "Donations are on. The agent asks accounts and extensions; what it has not deleted yet "
        "stays.");
  } else {
    if (const ErrorPtr error = scheduleAccounts()) return session.failWith(error);
    session.out << "Donations are on. No agent runs; the next one reads your accounts.\n";
    session.hint("extensions are asked when donations come on while an agent runs; once it does:");
    session.hint("quenlet collect");
  }
  return ExitCode::done;
}

}  // namespace

CommandPtr makePreferenceWords() { return std::make_unique<PreferenceWords>(); }

}  // namespace quenlet
