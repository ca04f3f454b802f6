#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>

#include "tools/commands/Command.h"
#include "tools/owner/AgentDonations.h"
#include "tools/owner/OwnersValues.h"
#include "tools/owner/ShownNumbers.h"
#include "tools/presentation/StatePresenter.h"

namespace quenlet {
namespace {

constexpr double secondsPerDay = 86400;

// "list": shows all donations, or some of them, in the agent's order.
class ListWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode run(Session& session) const;
  [[nodiscard]] StatedDonations choose(const StatedDonations& all, Date now) const;
  [[nodiscard]] std::string whyEmpty(std::size_t total) const;

  bool asJSON = false;
  bool onlyHidden = false;
  std::string bundleIdentifier;
  std::optional<std::int64_t> expiringDays;
};

void ListWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("list", "Show every donation, its state and its origin");
  word->add_flag("--json", asJSON, "As JSON, for programs");
  word->add_option("--bundle", bundleIdentifier, "Only what this donor donated")
      ->type_name("BUNDLE");
  word->add_flag_function(
          "--expiring{7}", [this](std::int64_t days) { expiringDays = days; },
          "Only what expires within a week, or within the days given as --expiring=DAYS")
      ->check(CLI::Range(0, 36500).description(""));
  word->add_flag("--hidden", onlyHidden, "Only what is not on the card");
  word->footer(
      "The number in front stands for the donation until the next change, wherever a word takes\n"
      "a donation. quenlet why NUMBER tells why it is, or is not, on the card.");
  word->callback([this, &chosen] { chosen = [this](Session& session) { return run(session); }; });
}

StatedDonations ListWord::choose(const StatedDonations& all, Date now) const {
  const Fingerprint bundle = DonationKeys::ofText(bundleIdentifier);
  std::optional<Date> until;
  if (expiringDays) until = now.addingSeconds(secondsPerDay * static_cast<double>(*expiringDays));
  StatedDonations some;
  for (const StatedDonation& stated : all) {
    const DonationValue& donation = *stated.donation;
    if (onlyHidden && stated.isShown()) continue;
    if (!bundleIdentifier.empty() && donation.bundleKey() != bundle) continue;
    if (until && !expiresBy(donation, *until)) continue;
    some.push_back(stated);
  }
  return some;
}

std::string ListWord::whyEmpty(std::size_t total) const {
  if (total == 0) return "There are no donations.";
  const bool isOne = total == 1;
  const std::string all = std::to_string(total) + " donations ";
  if (onlyHidden && bundleIdentifier.empty() && !expiringDays) {
    return isOne ? "The only donation is on the card." : "All " + all + "are on the card.";
  }
  return isOne ? "The only donation is not like that." : "None of " + all + "is like that.";
}

ExitCode ListWord::run(Session& session) const {
  const Result<StatedDonations> listed = listedDonations(session.agent);
  if (!listed.ok()) return session.failWith(listed.error());
  const StatedDonations some = choose(listed.value(), session.now);
  if (asJSON) {
    StatePresenter::writeJSON(session.out, some);
  } else if (some.empty()) {
    session.out << whyEmpty(listed.value().size()) << "\n";
  } else {
    StatePresenter::writeTable(session.out, session.screen, some);
  }
  ShownNumbers::rememberDonations(listed.value(), some);
  return ExitCode::done;
}

}  // namespace

CommandPtr makeListWord() { return std::make_unique<ListWord>(); }

}  // namespace quenlet
