#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <string>

#include "tools/commands/Command.h"
#include "tools/owner/OwnersValues.h"
#include "tools/owner/Selection.h"
#include "tools/owner/ShownNumbers.h"
#include "tools/presentation/ReasonPresenter.h"
#include "tools/presentation/StatePresenter.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

// "why": tells why values are, or are not, on the card.
class WhyWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode run(Session& session) const;
  [[nodiscard]] OwnersValues choose(const OwnersValues& all) const;
  void write(const Session& session, const OwnersValues& chosen, std::size_t total) const;

  std::string named;
  bool asJSON = false;
};

void WhyWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("why", "Tell why values are, or are not, on the card");
  word->add_option("VALUE", named,
                   "The value itself, a donation identifier, or a number as shown by list")
      ->type_name("");
  word->add_flag("--json", asJSON, "As JSON, for programs");
  word->footer(
      "Without a value, tells of everything that is not shown, by reason, and what you can do.\n"
      "Also knows what you rejected, and what became of your own last donations.");
  word->callback([this, &chosen] { chosen = [this](Session& session) { return run(session); }; });
}

bool isNamed(const UnlistedValue& unlisted, const std::string& text) {
  if (unlisted.donation && unlisted.donation->donationKey() == DonationKeys::ofText(text)) {
    return true;
  }
  return unlisted.value && isValueNamed(*unlisted.value, text);
}

OwnersValues WhyWord::choose(const OwnersValues& all) const {
  OwnersValues some{.donationsEnabled = all.donationsEnabled};
  if (named.empty()) {
    std::copy_if(all.listed.begin(), all.listed.end(), std::back_inserter(some.listed),
                 [](const StatedDonation& stated) { return !stated.isShown(); });
    some.unlisted = all.missing();
    return some;
  }
  for (const std::size_t place : select(donationsOf(all.listed), named).places) {
    some.listed.push_back(all.listed[place]);
  }
  std::copy_if(all.unlisted.begin(), all.unlisted.end(), std::back_inserter(some.unlisted),
               [this](const UnlistedValue& value) { return isNamed(value, named); });
  return some;
}

std::string summary(const OwnersValues& hidden, std::size_t total) {
  if (!hidden.donationsEnabled) {
    return "Donations are off, so the agent keeps and shows none: quenlet enable";
  }
  if (total == 0) return "There are no donations: quenlet donate FILE makes a start.";
  if (hidden.listed.empty()) return "Every donation is on the card.";
  return numberText(hidden.listed.size()) + " of " + counted(total, "donation") +
         (hidden.listed.size() == 1 ? " is" : " are") + " not shown.";
}

void WhyWord::write(const Session& session, const OwnersValues& chosen, std::size_t total) const {
  if (asJSON) {
    StatePresenter::writeJSON(session.out, chosen.listed, chosen.unlisted);
  } else if (named.empty()) {
    session.out << summary(chosen, total) << "\n";
    ReasonPresenter::writeGrouped(session.out, session.screen, chosen.listed, chosen.unlisted);
  } else {
    ReasonPresenter::writeEach(session.out, session.screen, session.now, chosen.listed,
                               chosen.unlisted);
  }
}

ExitCode WhyWord::run(Session& session) const {
  const Result<OwnersValues> all = OwnersValues::read(session.agent, session.now);
  if (!all.ok()) return session.failWith(all.error());
  const OwnersValues chosen = choose(all.value());
  ExitCode code = ExitCode::done;
  for (const ErrorPtr& problem : all.value().problems) code = session.failWith(problem);
  if (!named.empty() && chosen.listed.empty() && chosen.unlisted.empty()) {
    return session.refuse("no-match", "nothing that was donated is \"" + named + "\"",
                          all.value().donationsEnabled ? "quenlet list shows what there is"
                                                       : "donations are off: quenlet enable");
  }
  write(session, chosen, all.value().listed.size());
  ShownNumbers::rememberDonations(all.value().listed, chosen.listed);
  return code;
}

}  // namespace

CommandPtr makeWhyWord() { return std::make_unique<WhyWord>(); }

}  // namespace quenlet
