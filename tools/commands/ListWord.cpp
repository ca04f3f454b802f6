#include "tools/commands/ListWord.h"

#include <CLI/CLI.hpp>
#include <tuple>

#include "client/waitForReply.h"
#include "tools/commands/DonationPresenter.h"

namespace quenlet {

void ListWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("list", "Show every donation with its origin");
  word->add_flag("--json", asJSON, "As JSON, for programs");
  word->callback([this, &chosen] { chosen = [this](Session& session) { return run(session); }; });
}

ExitCode ListWord::run(Session& session) const {
  const auto [values, error] = waitForReply<std::shared_ptr<const DonationValues>, ErrorPtr>(
      [&](DonationsReply reply) { session.agent.meCardDonations(std::move(reply)); });
  if (error) return session.failWith(error);
  if (asJSON) {
    DonationPresenter::writeJSON(session.out, *values);
  } else if (values->empty()) {
    session.out << "There are no donations.\n";
  } else {
    DonationPresenter::writeTable(session.out, *values);
  }
  return ExitCode::done;
}

}  // namespace quenlet
