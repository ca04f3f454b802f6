#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "model/DonationKeys.h"
#include "platform/foundation/PropertyListError.h"
#include "tools/commands/Command.h"
#include "tools/commands/DonationRemarks.h"
#include "tools/owner/CardInput.h"
#include "tools/owner/OwnCard.h"
#include "tools/owner/OwnersDonations.h"
#include "tools/presentation/DonationPresenter.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/ValueText.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

constexpr double secondsInADay = 86400;
// About 1,000 years: dates in that range can be written and read back.
constexpr double mostDays = 365250;

constexpr char donateFooter[] =
    "Donate only your own values: they go on your card. Input with the names of several people,\n"
    "or with cards of organisations, is refused without --only or --all.\n"
    "\n"
    "Each file is a donor of its own unless --bundle names one. Donated again, it replaces all\n"
    "that it gave before. \"quenlet undo\" takes the last donation back.";

std::string validateDays(const std::string& text) {
  double days = 0;
  if (!CLI::detail::lexical_cast(text, days) || !(days > 0 && days <= mostDays)) {
    return "takes a number of days above 0, at most 365250";
  }
  return {};
}

std::string validateText(const std::string& text) {
  return text.empty() ? "takes a text that is not empty" : std::string();
}

// "donate": donates the values of vCard files in one request.
class DonateWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  using Inputs = std::vector<CardInput>;
  using Files = std::vector<DonatedFile>;

  [[nodiscard]] ExitCode run(Session& session) const;
  [[nodiscard]] Result<Inputs> readInputs() const;
  // Each gives `done` when the donation may go on.
  [[nodiscard]] ExitCode checkPeople(const Inputs& inputs, const Session& session) const;
  [[nodiscard]] ExitCode choose(Inputs& inputs, const Session& session) const;
  [[nodiscard]] ExitCode checkOwnCard(const Files& files, const Session& session) const;
  [[nodiscard]] Result<Files> filesOf(const Inputs& inputs, const Pseudonyms& pseudonyms,
                                      Date now) const;
  [[nodiscard]] Result<std::string> keyFor(const DonationJournal& journal) const;
  [[nodiscard]] ExitCode offer(const Inputs& inputs, Session& session) const;
  [[nodiscard]] static ExitCode give(const Inputs& inputs, const Files& files,
                                     const DonationJournal& journal, const std::string& key,
                                     Session& session);

  std::vector<std::string> paths;
  std::string bundleIdentifier;
  std::string clusterIdentifier;
  std::string chosenText;
  double expiresInDays = 90;
  bool takesAll = false;
  bool goesAnyway = false;
  bool dryRun = false;
};

void DonateWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("donate", "Donate the values of your vCards");
  word->add_option("FILE", paths, "vCard files, version 2.1, 3.0 or 4.0; - reads standard input")
      ->type_name("")
      ->required();
  CLI::Option* only = word->add_option("--only", chosenText,
                                       "The one card whose name, UID or e-mail contains TEXT");
  only->type_name("TEXT")->check(validateText);
  word->add_flag("--all", takesAll, "All cards of people as yours, even under other names")
      ->excludes(only);
  word->add_flag("--anyway", goesAnyway, "Even if your own card has another name");
  word->add_option("--bundle", bundleIdentifier, "Who donates [a donor for each file]")
      ->type_name("BUNDLE")
      ->check(validateText);
  word->add_option("--cluster", clusterIdentifier, "Donations that are rejected together")
      ->type_name("CLUSTER")
      ->check(validateText);
  word->add_option("--expires", expiresInDays, "In how many days the values expire")
      ->type_name("DAYS")
      ->capture_default_str()
      ->check(validateDays);
  word->add_flag("--dry-run", dryRun, "Show what would be donated and ask no agent");
  word->footer(donateFooter);
  word->callback([this, &chosen] { chosen = [this](Session& session) { return run(session); }; });
}

// Such a file gives nothing, and its earlier values must stay.
bool hasNoPerson(const CardInput& input) { return input.cards.empty() && !input.failures.empty(); }

ExitCode DonateWord::run(Session& session) const {
  Result<Inputs> read = readInputs();
  if (!read.ok()) return session.failWith(read.error());
  Inputs inputs = std::move(read).takeValue();
  const ExitCode checked =
      chosenText.empty() ? checkPeople(inputs, session) : choose(inputs, session);
  if (checked != ExitCode::done) return checked;
  const bool areAllRead = tellOfFaults(inputs, session);
  const bool hadOthers = std::any_of(inputs.begin(), inputs.end(), &hasNoPerson);
  std::erase_if(inputs, &hasNoPerson);
  if (inputs.empty() && hadOthers) {
    return session.failWithUsage("nothing was donated: no card is a person's");
  }
  const ExitCode given = offer(inputs, session);
  return given == ExitCode::done && !areAllRead ? ExitCode::refused : given;
}

Result<DonateWord::Inputs> DonateWord::readInputs() const {
  Inputs inputs;
  for (const std::string& path : paths) {
    Result<CardInput> input = CardInput::read(path);
    if (!input.ok()) return Result<Inputs>::failure(input.error());
    inputs.push_back(std::move(input).takeValue());
  }
  return Result<Inputs>::success(std::move(inputs));
}

ExitCode DonateWord::checkPeople(const Inputs& inputs, const Session& session) const {
  const CardPeople people(inputs);
  if (takesAll || people.areOne()) return ExitCode::done;
  std::string sentence = "nothing was donated: ";
  if (people.names().size() > 1) {
    sentence += "there are " + std::to_string(people.names().size()) + " names, not one";
  } else {
    sentence += counted(people.things().size(), "card is", "cards are") + " not a person's";
  }
  std::vector<std::string> lines = firstOf(people.names());
  for (std::string& thing : firstOf(people.things())) lines.push_back(std::move(thing));
  return session.failWithUsage(sentence, lines,
                               "--only TEXT takes the one card whose name, UID or e-mail address "
                               "contains TEXT; --all takes all cards of people as yours");
}

ExitCode DonateWord::choose(Inputs& inputs, const Session& session) const {
  const std::vector<std::string> kept = keepCardsWith(chosenText, inputs);
  if (kept.size() == 1) return ExitCode::done;
  if (kept.empty()) {
    return session.failWith(
        makeError(GeneralErrorDomain, 0, "no card's name, UID or e-mail address contains that"));
  }
  return session.failWithUsage(
      "nothing was donated: " + std::to_string(kept.size()) + " cards contain that, not one",
      firstOf(kept), "--only takes a longer text, --all all cards");
}

ExitCode DonateWord::checkOwnCard(const Files& files, const Session& session) const {
  const Result<OwnCard> card = OwnCard::read();
  if (!card.ok()) return session.failWith(card.error());
  const auto& ownName = card.value().name;
  if (!ownName) return ExitCode::done;
  const Fingerprint key = SuppressionNameEquivalence::keyOf(*ownName);
  for (const DonatedFile& file : files) {
    for (const DonationValuePtr& value : file.donated) {
      if (value->kind() != DonationKind::name || value->contentKey() == key) continue;
      const std::string own = textOf(*ownName);
      const std::string sentence = "your own card says " + (own.empty() ? "no name" : own) +
                                   ", not " + textOf(value->value()) +
                                   "; these values will not show";
      if (!goesAnyway) return session.failWithUsage(sentence, {}, "--anyway donates them");
      session.warn(sentence);
      return ExitCode::done;
    }
  }
  return ExitCode::done;
}

Result<DonateWord::Files> DonateWord::filesOf(const Inputs& inputs, const Pseudonyms& pseudonyms,
                                              Date now) const {
  DonationTerms terms{.bundleIdentifier = bundleIdentifier,
                      .donationDate = now,
                      .expirationDate = now.addingSeconds(expiresInDays * secondsInADay)};
  if (!clusterIdentifier.empty()) terms.clusterIdentifier = clusterIdentifier;
  Files files;
  for (const CardInput& input : inputs) {
    Result<DonatedFile> file = input.donations(terms, pseudonyms);
    if (!file.ok()) return Result<Files>::failure(file.error());
    files.push_back(std::move(file).takeValue());
  }
  return Result<Files>::success(std::move(files));
}

// A damaged journal gives no key: this donation starts a new one.
Result<std::string> DonateWord::keyFor(const DonationJournal& journal) const {
  const auto known = journal.knownKey();
  if (!known.ok() && known.error()->domain() != PropertyListErrorDomain) {
    return Result<std::string>::failure(known.error());
  }
  if (known.ok() && known.value()) return Result<std::string>::success(*known.value());
  // What is only shown needs no secret.
  return Result<std::string>::success(dryRun ? std::string(Pseudonyms::keySizeInBytes, '\0')
                                             : DonationJournal::newKey());
}

ExitCode DonateWord::offer(const Inputs& inputs, Session& session) const {
  const Result<DonationJournal> journal = DonationJournal::open();
  if (!journal.ok()) return session.failWith(journal.error());
  const Result<std::string> key = keyFor(journal.value());
  if (!key.ok()) return session.failWith(key.error());
  const Result<Files> files = filesOf(inputs, Pseudonyms(key.value()), session.now);
  if (!files.ok()) return session.failWith(files.error());
  if (const ExitCode code = checkOwnCard(files.value(), session); code != ExitCode::done) {
    return code;
  }
  tellOfRepeated(files.value(), session);
  if (!dryRun) return give(inputs, files.value(), journal.value(), key.value(), session);
  DonationValues values;
  for (const DonatedFile& file : files.value()) {
    values.insert(values.end(), file.donated.begin(), file.donated.end());
  }
  if (values.empty()) session.out << "The files hold nothing to donate.\n";
  DonationPresenter::writeTable(session.out, session.screen, values);
  return ExitCode::done;
}

ExitCode DonateWord::give(const Inputs& inputs, const Files& files, const DonationJournal& journal,
                          const std::string& key, Session& session) {
  const auto outcome = OwnersDonations(session.agent, journal, session.now).donate(files, key);
  if (!outcome.ok()) return session.failWith(outcome.error());
  for (std::size_t place = 0; place < files.size(); ++place) {
    session.say(inputs[place].path + ": " +
                textOf(outcome.value().files[place], files[place].bundleIdentifier));
  }
  tellOfJournal(outcome.value(), session);
  return ExitCode::done;
}

}  // namespace

CommandPtr makeDonateWord() { return std::make_unique<DonateWord>(); }

}  // namespace quenlet
