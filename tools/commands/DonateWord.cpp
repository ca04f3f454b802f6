#include <CLI/CLI.hpp>
#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include "client/CardDonor.h"
#include "client/CardFile.h"
#include "client/Conversion.h"
#include "client/waitForReply.h"
#include "platform/contacts/ContactStore.h"
#include "tools/commands/Command.h"
#include "tools/presentation/DonationPresenter.h"
#include "tools/presentation/TerminalText.h"

namespace quenlet {
namespace {

constexpr double secondsInADay = 86400;
// About 1,000 years: dates in that range can be written and read back.
constexpr double mostDays = 365250;

constexpr char footer[] =
    "A donation's identifier is made of the bundle, the card's UID (or the file's name and the\n"
    "card's place in it) and the property, as in \"org.quenlet.cli:4fbe8971:email:2\". The same "
    "card\n"
    "donated again replaces its former values; entries it no longer has stay until they expire.";

std::string validateDays(const std::string& text) {
  double days = 0;
  if (!CLI::detail::lexical_cast(text, days) || !(std::abs(days) <= mostDays)) {
    return "takes a number of days, at most 365250";
  }
  return {};
}

std::string validateIdentifier(const std::string& text) {
  return text.empty() ? "takes a text that is not empty" : std::string();
}

std::string count(std::size_t number, const char* noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

// "donate": donates the values of vCard files in one request.
class DonateWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode run(Session& session) const;
  // Whether every card was read; an error when a file had no readable card.
  [[nodiscard]] Result<bool> readFiles(CardDonor& donor, Session& session) const;
  [[nodiscard]] ExitCode donate(const DonationValues& values, Session& session) const;

  std::vector<std::string> files;
  std::string bundleIdentifier = "org.quenlet.cli";
  std::string clusterIdentifier;
  double expiresInDays = 90;
  bool dryRun = false;
};

void DonateWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("donate", "Donate the values of vCards");
  word->add_option("FILE", files, "vCard files, version 2.1, 3.0 or 4.0; - reads standard input")
      ->type_name("")
      ->required();
  word->add_option("--bundle", bundleIdentifier, "Who donates")
      ->type_name("ID")
      ->capture_default_str()
      ->check(validateIdentifier);
  word->add_option("--cluster", clusterIdentifier, "Donations that are rejected together")
      ->type_name("ID")
      ->check(validateIdentifier);
  word->add_option("--expires", expiresInDays, "In how many days the values expire")
      ->type_name("DAYS")
      ->capture_default_str()
      ->check(validateDays);
  word->add_flag("--dry-run", dryRun, "Show what would be donated and ask no agent");
  word->footer(footer);
  word->callback([this, &chosen] { chosen = [this](Session& session) { return run(session); }; });
}

ExitCode DonateWord::run(Session& session) const {
  std::optional<std::string> cluster;
  if (!clusterIdentifier.empty()) cluster = clusterIdentifier;
  CardDonor donor({bundleIdentifier, cluster, session.now,
                   session.now.addingSeconds(expiresInDays * secondsInADay)});
  const Result<bool> areAllRead = readFiles(donor, session);
  if (!areAllRead.ok()) return session.failWith(areAllRead.error());
  if (const std::size_t repeated = donor.countRepeated(); repeated > 0) {
    session.err << "quenlet: " << count(repeated, "value")
                << " will replace others of these files, whose cards have the same UID or name\n";
  }
  const Result<DonationValues> values =
      Conversion::donationValues(std::move(donor).takeDonations());
  if (!values.ok()) return session.failWith(values.error());
  if (values.value().empty()) {
    session.out << "The files hold nothing to donate.\n";
  } else if (dryRun) {
    DonationPresenter::writeTable(session.out, values.value());
  } else if (const ExitCode code = donate(values.value(), session); code != ExitCode::done) {
    return code;
  }
  return areAllRead.value() ? ExitCode::done : ExitCode::refused;
}

Result<bool> DonateWord::readFiles(CardDonor& donor, Session& session) const {
  bool areAllRead = true;
  for (const std::string& file : files) {
    const Result<VCards> read = CardFile::read(file);
    if (!read.ok()) return Result<bool>::failure(read.error());
    const VCards& cards = read.value();
    for (const ErrorPtr& failure : cards.failures) {
      session.err << "quenlet: skipped a card: " << printable(failure->debugDescription()) << "\n";
      areAllRead = areAllRead && failure->code() == static_cast<int>(ContactErrorCode::notAPerson);
    }
    donor.addFile(cards.cards, CardFile::nameOf(file));
    std::size_t skipped = 0;
    for (const VCard& card : cards.cards) skipped += card.skippedEntries;
    if (skipped > 0) {
      session.err << "quenlet: " << printable(file) << ": skipped " << skipped
                  << (skipped == 1 ? " entry" : " entries") << " without a usable value\n";
    }
  }
  return Result<bool>::success(areAllRead);
}

ExitCode DonateWord::donate(const DonationValues& values, Session& session) const {
  const auto [error] = waitForReply<ErrorPtr>(
      [&](ErrorReply reply) { session.agent.donateMeCardValues(values, std::move(reply)); });
  if (error) return session.failWith(error);
  session.out << "Donated " << count(values.size(), "value") << " as "
              << printable(bundleIdentifier) << ".\n";
  return ExitCode::done;
}

}  // namespace

CommandPtr makeDonateWord() { return std::make_unique<DonateWord>(); }

}  // namespace quenlet
