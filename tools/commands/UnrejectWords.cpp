#include <CLI/CLI.hpp>
#include <algorithm>
#include <numeric>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "client/waitForReply.h"
#include "platform/foundation/JSONWriter.h"
#include "tools/commands/Command.h"
#include "tools/owner/OwnersDecisions.h"
#include "tools/owner/Selection.h"
#include "tools/owner/ShownNumbers.h"
#include "tools/presentation/DonationPresenter.h"
#include "tools/presentation/TextTable.h"
#include "tools/presentation/ValueText.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

using Decisions = std::vector<FeedbackDecision>;

std::vector<std::string> itemsOf(const Decisions& decisions) {
  std::vector<std::string> items;
  items.reserve(decisions.size());
  for (const FeedbackDecision& decision : decisions) items.push_back(decision.key);
  return items;
}

Decisions onlyRejected(Decisions decisions) {
  std::erase_if(decisions, [](const auto& one) { return one.status != FeedbackStatus::rejected; });
  return decisions;
}

void writeJSON(std::ostream& out, const Decisions& decisions) {
  JSONWriter json;
  json.beginArray();
  for (const FeedbackDecision& decision : decisions) {
    json.beginObject().key("kind").value(kindOf(decision.value));
    DonationPresenter::writeValue(json, decision.value);
    json.key("status").value(wordFor(decision.status)).endObject();
  }
  out << json.endArray().text() << "\n";
}

void writeTable(const Session& session, const Decisions& decisions) {
  TextTable table({{"#", TextTable::Fit::whole}, "KIND", "VALUE", "STATUS"});
  std::size_t number = 0;
  for (const FeedbackDecision& decision : decisions) {
    table.addRow({std::to_string(++number), titleOfKind(decision.value), textOf(decision.value),
                  wordFor(decision.status)});
  }
  table.write(session.out, session.screen);
  std::vector<std::size_t> places(decisions.size());
  std::iota(places.begin(), places.end(), 0);
  ShownNumbers::ofRejections().remember(itemsOf(decisions), places);
}

// "rejections", "unreject" and "clear-rejections": what keeps values away, and its end.
class UnrejectWords final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  void addUnreject(CLI::App& app, ChosenAction& chosen);
  [[nodiscard]] ExitCode show(Session& session) const;
  [[nodiscard]] ExitCode unreject(Session& session) const;
  [[nodiscard]] ExitCode clear(Session& session) const;
  [[nodiscard]] static ExitCode takeBack(Session& session, const OwnersDecisions& rejections,
                                         const Decisions& wanted);
  // The decisions that the arguments name, each once. Nothing, after an error message, when an
  // argument does not name any.
  [[nodiscard]] std::optional<Decisions> named(const Session& session,
                                               const Decisions& decisions) const;

  bool asJSON = false;
  std::vector<std::string> texts;
  bool isAll = false;
  bool isConfirmed = false;
};

void UnrejectWords::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* list = app.add_subcommand("rejections", "Show what is kept away; needs no agent");
  list->add_flag("--json", asJSON, "As JSON, for programs");
  list->footer(
      "Values that a contacts program has noted as confirmed are kept away as well: it has\n"
      "taken them over.");
  list->callback([this, &chosen] { chosen = [this](Session& session) { return show(session); }; });
  addUnreject(app, chosen);
  CLI::App* word = app.add_subcommand("clear-rejections", "Ask the agent to forget rejections");
  word->footer(
      "The agent keeps no rejections of its own, so this changes nothing. \"quenlet unreject\n"
      "--all\" takes all of them back.");
  word->callback([this, &chosen] { chosen = [this](Session& session) { return clear(session); }; });
}

void UnrejectWords::addUnreject(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("unreject", "Let a rejected value be donated again");
  CLI::Option* values =
      word->add_option("REJECTION", texts, "The value itself, or its number from rejections")
          ->type_name("");
  CLI::Option* all = word->add_flag("--all", isAll, "All that is rejected");
  word->add_flag("--yes", isConfirmed, "With --all, do not ask");
  values->excludes(all);
  word->footer("Needs no agent; a running one notices. The value comes back once it is donated.");
  word->callback([this, &chosen] {
    if (texts.empty() && !isAll) throw CLI::RequiredError("REJECTION or --all");
    chosen = [this](Session& session) { return unreject(session); };
  });
}

ExitCode UnrejectWords::show(Session& session) const {
  const auto rejections = OwnersDecisions::open();
  if (!rejections.ok()) return session.failWith(rejections.error());
  const Result<Decisions> decisions = rejections.value().all();
  if (!decisions.ok()) return session.failWith(decisions.error());
  if (asJSON) {
    writeJSON(session.out, decisions.value());
  } else if (decisions.value().empty()) {
    session.out << "Nothing is rejected.\n";
  } else {
    writeTable(session, decisions.value());
  }
  return ExitCode::done;
}

std::optional<Decisions> UnrejectWords::named(const Session& session,
                                              const Decisions& decisions) const {
  std::set<std::size_t> places;
  for (const std::string& text : texts) {
    const std::size_t number = placeNumber(text);
    bool isFound = false;
    for (std::size_t place = 0; place < decisions.size(); ++place) {
      if (!isValueNamed(decisions[place].value, text)) continue;
      places.insert(place);
      isFound = true;
    }
    if (isFound) continue;
    if (number == 0 || number > decisions.size()) {
      session.refuse("no-match", "\"" + text + "\" is not rejected",
                     "quenlet rejections shows what is");
      return std::nullopt;
    }
    if (!ShownNumbers::ofRejections().hold(itemsOf(decisions), number - 1)) {
      session.refuse("stale-number", "the rejections have changed since their numbers were shown",
                     "quenlet rejections shows the present ones");
      return std::nullopt;
    }
    places.insert(number - 1);
  }
  Decisions found;
  for (const std::size_t place : places) found.push_back(decisions[place]);
  return found;
}

ExitCode UnrejectWords::unreject(Session& session) const {
  const auto rejections = OwnersDecisions::open();
  if (!rejections.ok()) return session.failWith(rejections.error());
  Result<Decisions> decisions = rejections.value().all();
  if (!decisions.ok()) return session.failWith(decisions.error());
  if (!isAll) {
    const std::optional<Decisions> wanted = named(session, decisions.value());
    return wanted ? takeBack(session, rejections.value(), *wanted) : ExitCode::refused;
  }
  const Decisions all = onlyRejected(std::move(decisions).takeValue());
  if (all.empty()) {
    session.out << "Nothing is rejected.\n";
    return ExitCode::done;
  }
  const ExitCode answer =
      session.ask(isConfirmed, "take back " + counted(all.size(), "rejection") + "?");
  return answer == ExitCode::done ? takeBack(session, rejections.value(), all) : answer;
}

ExitCode UnrejectWords::takeBack(Session& session, const OwnersDecisions& rejections,
                                 const Decisions& wanted) {
  const Result<std::size_t> taken = rejections.takeBack(wanted);
  if (!taken.ok()) return session.failWith(taken.error());
  for (const FeedbackDecision& decision : wanted) {
    session.say("Not " + std::string(wordFor(decision.status)) +
                " any more: " + phraseFor(decision.value) + ".");
  }
  session.say((wanted.size() == 1 ? "It comes back when it is" : "They come back when they are") +
              std::string(" donated again, as with quenlet donate."));
  return ExitCode::done;
}

ExitCode UnrejectWords::clear(Session& session) const {
  const auto [error] = waitForReply<ErrorPtr>([&](ErrorReply reply) {
    session.agent.removeAllRejectionsWithCompletionHandler(std::move(reply));
  });
  if (error) return session.failWith(error);
  const auto rejections = OwnersDecisions::open();
  if (!rejections.ok()) return session.failWith(rejections.error());
  Result<Decisions> decisions = rejections.value().all();
  if (!decisions.ok()) return session.failWith(decisions.error());
  const std::size_t count = onlyRejected(std::move(decisions).takeValue()).size();
  session.say("The agent keeps no rejections of its own: nothing has changed, and " +
              (count == 0 ? "nothing is rejected."
                          : counted(count, "value stays", "values stay") +
                                " rejected. quenlet unreject --all takes them back."));
  return ExitCode::done;
}

}  // namespace

CommandPtr makeUnrejectWords() { return std::make_unique<UnrejectWords>(); }

}  // namespace quenlet
