#include <CLI/CLI.hpp>
#include <tuple>

#include "client/waitForReply.h"
#include "tools/commands/Command.h"
#include "tools/owner/ShownNumbers.h"
#include "tools/presentation/DonationPresenter.h"

namespace quenlet {
namespace {

// "list": shows all donations, in the agent's order.
class ListWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode run(Session& session) const;

  bool asJSON = false;
};

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
    ShownNumbers::ofDonations().remember(ShownNumbers::itemsOf(*values));
  }
  return ExitCode::done;
}

}  // namespace

CommandPtr makeListWord() { return std::make_unique<ListWord>(); }

}  // namespace quenlet
