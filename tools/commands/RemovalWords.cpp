#include "tools/commands/RemovalWords.h"

#include <CLI/CLI.hpp>
#include <tuple>

#include "client/waitForReply.h"

namespace quenlet {
namespace {

ExitCode finish(const Session& session, bool success, ErrorPtr error) {
  if (!success && !error) error = makeError(GeneralErrorDomain, 0, "the agent gave no reason");
  return session.finishWith(error);
}

}  // namespace

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

}  // namespace quenlet
