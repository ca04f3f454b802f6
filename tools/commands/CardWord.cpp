#include <CLI/CLI.hpp>
#include <string>
#include <tuple>

#include "client/waitForReply.h"
#include "platform/contacts/VCard.h"
#include "tools/commands/Command.h"
#include "tools/presentation/CardPresenter.h"

namespace quenlet {
namespace {

// "card": shows the donated me card.
class CardWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode run(Session& session) const;

  std::string format = "text";
};

void CardWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("card", "Show the donated me card");
  word->add_option("--format", format, "text, vcard or json")
      ->type_name("FORMAT")
      ->capture_default_str()
      ->check(CLI::IsMember({"text", "vcard", "json"}));
  word->footer("The text tells for each entry who donated it, under which identifier, until when.");
  word->callback([this, &chosen] { chosen = [this](Session& session) { return run(session); }; });
}

ExitCode CardWord::run(Session& session) const {
  const auto [outcome] = waitForReply<Result<ContactPtr>>(
      [&](EitherContactReply reply) { session.agent.synchronousDonatedMeCard(std::move(reply)); });
  if (!outcome.ok()) return session.failWith(outcome.error());
  const Contact& card = *outcome.value();
  if (format == "json") {
    CardPresenter::writeJSON(session.out, card);
  } else if (format == "vcard") {
    session.out << writeVCard(card);
  } else {
    CardPresenter::writeText(session.out, card);
  }
  return ExitCode::done;
}

}  // namespace

CommandPtr makeCardWord() { return std::make_unique<CardWord>(); }

}  // namespace quenlet
