#include <CLI/CLI.hpp>

#include "tools/commands/Command.h"
#include "tools/owner/UserPreferences.h"

namespace quenlet {
namespace {

ExitCode write(Session& session, bool enabled) {
  const auto user = UserPreferences::open();
  if (!user.ok()) return session.failWith(user.error());
  return session.finishWith(user.value()->preferences().setDonationsEnabled(enabled));
}

// "enable" and "disable": write the preference, which a running agent notices. Stateless.
class PreferenceWords final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;
};

void PreferenceWords::addTo(CLI::App& app, ChosenAction& chosen) {
  app.add_subcommand("enable", "Let donations be made; needs no agent")->callback([&chosen] {
    chosen = [](Session& session) { return write(session, true); };
  });
  CLI::App* disable = app.add_subcommand("disable", "Refuse donations; needs no agent");
  disable->footer("Donations are deleted after 30 seconds, unless they are enabled before.");
  disable->callback([&chosen] { chosen = [](Session& session) { return write(session, false); }; });
}

}  // namespace

CommandPtr makePreferenceWords() { return std::make_unique<PreferenceWords>(); }

}  // namespace quenlet
