#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/extensions/ExtensionCatalog.h"
#include "platform/files/UserDirectories.h"
#include "platform/ipc/EntitlementDatabase.h"
#include "tools/commands/Command.h"
#include "tools/commands/OnlineAccountsSync.h"
#include "tools/owner/AgentDonations.h"
#include "tools/owner/CollectLock.h"
#include "tools/owner/CollectedDonor.h"
#include "tools/owner/DonorAnswers.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

// "collect": asks donor extensions for all of their values, and has the agent hold these and no
// others of theirs. A donor that fails loses nothing. Before, it takes over GNOME's accounts, if
// that is switched on: also without an agent, as the next one reads them.
class CollectWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode collect(Session& session) const;
  [[nodiscard]] ExitCode collectFrom(Session& session,
                                     std::shared_ptr<const ExtensionCatalog> manifests) const;

  std::vector<std::string> bundles;
};

void CollectWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("collect", "Ask donor extensions for what they have now");
  word->add_option("BUNDLE", bundles, "Their bundle identifiers [all that are installed]")
      ->type_name("");
  word->footer(
      "What an extension gives takes the place of all that it gave before. One that fails keeps\n"
      "its values. The agent asks extensions by itself only when donations come on.\n"
      "\n"
      "While gnome-accounts is switched on, the accounts of GNOME are taken over first, as\n"
      "\"account sync\" does.");
  word->callback([this, &chosen] { chosen = [this](Session& s) { return collect(s); }; });
}

void tell(const Session& session, const std::string& bundle, const CollectedDonor& collected) {
  std::vector<std::string> parts;
  const std::size_t all = collected.donated + collected.leftOut;
  parts.push_back(all == 0 ? "nothing to donate" : counted(collected.donated, "donation"));
  if (collected.leftOut > 0) {
    parts.push_back(numberText(collected.leftOut) + " left out, as rejected or confirmed");
  }
  if (collected.removed > 0) {
    parts.push_back(numberText(collected.removed) + " removed, as no longer there");
  }
  std::string text = bundle + ": ";
  for (const std::string& part : parts) text += (&part == &parts.front() ? "" : "; ") + part;
  session.say(text + ".");
}

// Whether the answer reached the agent.
ErrorPtr takeOver(const Session& session, const DonorAnswer& answer,
                  const DonationListPtr& before) {
  if (!answer.donated.ok()) return answer.donated.error();
  const auto collected = CollectedDonor::replace(session.agent, answer.bundleIdentifier,
                                                 answer.donated.value(), before);
  if (!collected.ok()) return collected.error();
  tell(session, answer.bundleIdentifier, collected.value());
  return nullptr;
}

ExitCode followOnlineAccounts(Session& session) {
  const auto accounts = UserAccounts::open();
  if (!accounts.ok()) return session.failWith(accounts.error());
  return OnlineAccountsSync(session, *accounts.value()).run();
}

// Asks the donors of `bundles`, or all when the list is empty.
ExitCode askDonors(Session& session, std::shared_ptr<const ExtensionCatalog> manifests,
                   const std::vector<std::string>& bundles, bool& isAnyInstalled) {
  // Before any program is started: without an agent, or while donations are off, it is in vain.
  const auto before = donationsOf(session.agent);
  if (!before.ok()) return session.failWith(before.error());
  const DonorAnswers answers = DonorAnswers::ask(std::move(manifests), bundles);
  ExitCode code = ExitCode::done;
  if (answers.unreadable) code = session.failWith(answers.unreadable);
  for (const DonorAnswer& answer : answers.donors) {
    const ErrorPtr error = takeOver(session, answer, before.value());
    if (!error) continue;
    session.warn(answer.bundleIdentifier + " keeps what it has given: " + error->description());
    session.hintAt(*error);
    code = isNoAnswer(*error) ? ExitCode::noAgent : ExitCode::refused;
  }
  isAnyInstalled = !answers.donors.empty() || code != ExitCode::done;
  return code;
}

ExitCode giveUp(const Session& session, const ErrorPtr& error) {
  const ErrorPtr failure = error->code() == EWOULDBLOCK ? CollectLock::leaveWord() : nullptr;
  if (failure) session.warn("nothing looks again by itself: " + failure->description());
  return session.failWith(error);
}

ExitCode CollectWord::collect(Session& session) const {
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return session.failWith(home.error());
  const auto lock = CollectLock::take([&] { session.tell("Waiting for another collect to end."); });
  if (!lock.ok()) return giveUp(session, lock.error());
  // One for all that look into it, so that it reports a bad manifest once.
  return collectFrom(session, std::make_shared<ExtensionCatalog>(ManifestDirectory::directoriesOf(
                                  EntitlementDatabase::prefixOfRunningProgram(), home.value())));
}

ExitCode CollectWord::collectFrom(Session& session,
                                  std::shared_ptr<const ExtensionCatalog> manifests) const {
  std::vector<std::string> donors = bundles;
  const auto accounts =
      std::find(donors.begin(), donors.end(), OnlineAccountsSync::bundleIdentifier);
  const bool isOn =
      (donors.empty() || accounts != donors.end()) && OnlineAccountsSync::isSwitchedOn(*manifests);
  const ExitCode followed = isOn ? followOnlineAccounts(session) : ExitCode::done;
  if (isOn && accounts != donors.end()) {
    donors.erase(accounts);
    if (donors.empty()) return followed;
  }
  bool isAnyInstalled = false;
  const ExitCode asked = askDonors(session, std::move(manifests), donors, isAnyInstalled);
  if (!isAnyInstalled && !isOn) session.out << "No donor extension is installed.\n";
  return asked == ExitCode::done ? followed : asked;
}

}  // namespace

CommandPtr makeCollectWord() { return std::make_unique<CollectWord>(); }

}  // namespace quenlet
