#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <tuple>

#include "client/waitForReply.h"
#include "platform/contacts/VCard.h"
#include "tools/commands/Command.h"
#include "tools/owner/OwnersValues.h"
#include "tools/owner/ShownNumbers.h"
#include "tools/presentation/CardPresenter.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

// "card": shows the donated me card.
class CardWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode run(Session& session) const;
  [[nodiscard]] static ExitCode writeText(Session& session, const Contact& card);

  std::string format = "text";
};

void CardWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("card", "Show the donated me card");
  word->add_option("--format", format, "text, vcard or json")
      ->type_name("FORMAT")
      ->capture_default_str()
      ->check(CLI::IsMember({"text", "vcard", "json"}));
  word->footer(
      "The text tells for each entry its number in the list, who donated it and until when, and\n"
      "how many donations are not shown.");
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
    return writeText(session, card);
  }
  return ExitCode::done;
}

ExitCode CardWord::writeText(Session& session, const Contact& card) {
  const Result<StatedDonations> listed = listedDonations(session.agent);
  if (!listed.ok()) return session.failWith(listed.error());
  StatedDonations shown;
  std::copy_if(listed.value().begin(), listed.value().end(), std::back_inserter(shown),
               [](const StatedDonation& stated) { return stated.isShown(); });
  const std::size_t hidden = listed.value().size() - shown.size();
  const bool isEmpty = !CardPresenter::writeText(session.out, session.screen, card, listed.value());
  ShownNumbers::rememberDonations(listed.value(), shown);
  // The list came after the card, and may be newer.
  if (isEmpty && listed.value().empty()) {
    session.out << "The card is empty: nothing is donated. quenlet donate FILE makes a start.\n";
  } else if (isEmpty && hidden == 0) {
    session.out << "The card is empty: what is donated has no text, or came just now.\n";
  } else if (isEmpty) {
    session.out << "The card is empty. ";
  } else if (hidden > 0) {
    session.out << "\n";
  }
  if (hidden > 0) {
    session.out << counted(hidden, "donation is", "donations are") << " not shown: quenlet why\n";
  }
  return ExitCode::done;
}

}  // namespace

CommandPtr makeCardWord() { return std::make_unique<CardWord>(); }

}  // namespace quenlet
