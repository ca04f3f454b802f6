#include <CLI/CLI.hpp>
#include <string>
#include <tuple>
#include <vector>

#include "client/waitForReply.h"
#include "tools/commands/Command.h"

namespace quenlet {
namespace {

ExitCode finish(const Session& session, bool success, ErrorPtr error) {
  if (!success && !error) error = makeError(GeneralErrorDomain, 0, "the agent gave no reason");
  return session.finishWith(error);
}

// "remove" and "forget": withdraw donations by identifier or by donor.
class RemovalWords final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode remove(Session& session) const;
  [[nodiscard]] ExitCode forget(Session& session) const;

  std::vector<std::string> donationIdentifiers;
  std::string bundleIdentifier;
};

void RemovalWords::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* byIdentifier = app.add_subcommand("remove", "Take single donations back");
  byIdentifier->add_option("ID", donationIdentifiers, "Donation identifiers, as shown by list")
      ->type_name("")
      ->required();
  byIdentifier->callback(
      [this, &chosen] { chosen = [this](Session& session) { return remove(session); }; });

  CLI::App* byBundle = app.add_subcommand("forget", "Take back all that one donor donated");
  byBundle->add_option("BUNDLE", bundleIdentifier, "The donor's bundle identifier")
      ->type_name("")
      ->required();
  byBundle->callback(
      [this, &chosen] { chosen = [this](Session& session) { return forget(session); }; });
}

ExitCode RemovalWords::remove(Session& session) const {
  const auto [success, error] = waitForReply<bool, ErrorPtr>([&](SuccessReply reply) {
    session.agent.removeDonatedMeCardValuesForIdentifiers(donationIdentifiers, std::move(reply));
  });
  return finish(session, success, error);
}

ExitCode RemovalWords::forget(Session& session) const {
  const auto [success, error] = waitForReply<bool, ErrorPtr>([&](SuccessReply reply) {
    session.agent.removeDonatedMeCardValuesWithBundleIdentifier(bundleIdentifier, std::move(reply));
  });
  return finish(session, success, error);
}

}  // namespace

CommandPtr makeRemovalWords() { return std::make_unique<RemovalWords>(); }

}  // namespace quenlet
