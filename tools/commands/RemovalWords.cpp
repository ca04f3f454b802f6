#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "platform/foundation/Text.h"
#include "tools/commands/Command.h"
#include "tools/commands/DonationChoice.h"
#include "tools/owner/AgentDonations.h"
#include "tools/owner/WaitingAgent.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

// "remove" and "forget": take donations back, single ones or all of a donor, and count them.
class RemovalWords final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode remove(Session& session) const;
  [[nodiscard]] ExitCode forget(Session& session) const;

  std::vector<std::string> texts;
  std::string bundleIdentifier;
};

void RemovalWords::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* single = app.add_subcommand("remove", "Take single donations back");
  single->add_option("VALUE", texts, "Values, or numbers or identifiers from list")
      ->type_name("")
      ->required();
  single->footer(
      "Nothing is taken back unless there is a donation for each of them. Donors may donate the\n"
      "value again; \"quenlet reject\" keeps it away.");
  single->callback(
      [this, &chosen] { chosen = [this](Session& session) { return remove(session); }; });

  CLI::App* byBundle = app.add_subcommand("forget", "Take back all that one donor donated");
  byBundle->add_option("BUNDLE", bundleIdentifier, "The donor's bundle identifier")
      ->type_name("")
      ->required();
  byBundle->callback(
      [this, &chosen] { chosen = [this](Session& session) { return forget(session); }; });
}

// Tells how many of `wanted` the agent holds no more, after its reply.
ExitCode tellRemoved(const Session& session, const DonationValues& wanted, const ErrorPtr& error) {
  if (error) return session.failWith(error);
  const auto after = donationsOf(session.agent);
  if (!after.ok()) return session.failWith(after.error());
  const DonationValues gone = missingFrom(*after.value(), wanted);
  if (gone.empty()) {
    return session.refuse("not-done", "the agent still holds what it was asked to remove",
                          "a donor may just have donated it again: quenlet list");
  }
  session.say("Removed " + counted(gone.size(), "donation") + ", from " +
              enumerated(donorsOf(gone)) + ".");
  return ExitCode::done;
}

ExitCode RemovalWords::remove(Session& session) const {
  const auto before = donationsOf(session.agent);
  if (!before.ok()) return session.failWith(before.error());
  const auto wanted = DonationChoice::choose(session, *before.value(), texts);
  if (!wanted) return ExitCode::refused;
  std::vector<std::string> identifiers;
  for (const DonationValuePtr& donation : *wanted) {
    identifiers.push_back(donation->decoded().origin.donationIdentifier);
  }
  return tellRemoved(session, *wanted, WaitingAgent(session.agent).remove(identifiers));
}

ExitCode RemovalWords::forget(Session& session) const {
  const auto before = donationsOf(session.agent);
  if (!before.ok()) return session.failWith(before.error());
  DonationValues wanted;
  std::copy_if(before.value()->begin(), before.value()->end(), std::back_inserter(wanted),
               [this](const DonationValuePtr& donation) {
                 return canonicallyEqual(donation->decoded().origin.bundleIdentifier,
                                         bundleIdentifier);
               });
  if (wanted.empty()) {
    return session.refuse("no-match", "no donation is from \"" + bundleIdentifier + "\"",
                          before.value()->empty()
                              ? "there are no donations"
                              : "the donors: " + enumerated(donorsOf(*before.value())));
  }
  return tellRemoved(session, wanted, WaitingAgent(session.agent).removeAllOf(bundleIdentifier));
}

}  // namespace

CommandPtr makeRemovalWords() { return std::make_unique<RemovalWords>(); }

}  // namespace quenlet
