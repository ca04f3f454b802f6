#include "tools/commands/PreferenceWords.h"

#include <CLI/CLI.hpp>

#include "tools/commands/UserPreferences.h"

namespace quenlet {
namespace {

ExitCode write(Session& session, bool enabled) {
  const auto user = UserPreferences::open();
  if (!user.ok()) return session.failWith(user.error());
  return session.finishWith(user.value()->preferences().setDonationsEnabled(enabled));
}

}  // namespace

void PreferenceWords::addTo(CLI::App& app, ChosenAction& chosen) {
  app.add_subcommand("enable", "Let donations be made; needs no agent")->callback([&chosen] {
    chosen = [](Session& session) { return write(session, true); };
  });
  CLI::App* disable = app.add_subcommand("disable", "Refuse donations; needs no agent");
  disable->footer("Donations are deleted after 30 seconds, unless they are enabled before.");
  disable->callback([&chosen] { chosen = [](Session& session) { return write(session, false); }; });
}

}  // namespace quenlet
