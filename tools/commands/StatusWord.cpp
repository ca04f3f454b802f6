#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <functional>
#include <optional>
#include <utility>

#include "platform/foundation/JSONWriter.h"
#include "platform/preferences/UserPreferences.h"
#include "tools/commands/Command.h"
#include "tools/owner/AgentDonations.h"
#include "tools/owner/ClientPrograms.h"
#include "tools/owner/OwnCard.h"
#include "tools/presentation/TextTable.h"
#include "tools/presentation/WholeCardPresenter.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

constexpr double secondsInAWeek = 7 * 86400;

struct Status final {
  bool donationsEnabled = true;
  // Set when an agent answered with its donations.
  std::optional<std::size_t> donationCount;
  // How many of them expire within a week.
  std::size_t expiringSoon = 0;
  OwnCard ownCard;
  // How many programs may ask the agent.
  std::size_t servedPrograms = 0;
  // Why the count is missing: no agent, no answer in time, or a refusal.
  ErrorPtr error;

  [[nodiscard]] bool agentAnswers() const { return !error || !isNoAnswer(*error); }
  [[nodiscard]] const char* wordForAgent() const {
    if (agentAnswers()) return "answers";
    return isNoAgent(*error) ? "none" : "does not answer";
  }
};

Result<Status> readStatus(Session& session) {
  using Read = Result<Status>;
  const auto user = UserPreferences::open();
  if (!user.ok()) return Read::failure(user.error());
  Result<OwnCard> ownCard = OwnCard::read();
  if (!ownCard.ok()) return Read::failure(ownCard.error());
  Status status;
  status.donationsEnabled = user.value()->preferences().isDonationsEnabled();
  status.ownCard = std::move(ownCard).takeValue();
  const std::vector<ClientProgram> programs = ClientPrograms::read().programs;
  status.servedPrograms = static_cast<std::size_t>(
      std::count_if(programs.begin(), programs.end(), std::mem_fn(&ClientProgram::isServed)));
  const Result<DonationListPtr> donations = donationsOf(session.agent);
  if (donations.ok()) {
    const DonationValues& values = *donations.value();
    status.donationCount = values.size();
    status.expiringSoon = countExpiring(values, session.now.addingSeconds(secondsInAWeek));
  } else {
    status.error = donations.error();
  }
  return Read::success(std::move(status));
}

void addOwnCard(TextTable& table, const OwnCard& card) {
  if (card.fault) {
    table.addRow({"Own card", "not read: " + card.fault->debugDescription()});
  } else if (!card.contact) {
    table.addRow({"Own card", "none; quenlet me set FILE puts one in place"});
  } else {
    table.addRow({"Own card", card.skipped.empty() ? "read" : "read, without some of its lines:"});
  }
  for (const SkippedEntry& fault : card.skipped) {
    table.addRow({"", WholeCardPresenter::textOf(fault)});
  }
}

void writeText(std::ostream& out, const Status& status, const Screen& screen) {
  TextTable table;
  table.addRow({"Preference", status.donationsEnabled ? "enabled" : "disabled"});
  table.addRow({"Agent", status.wordForAgent()});
  if (status.donationCount) table.addRow({"Donations", std::to_string(*status.donationCount)});
  if (status.expiringSoon > 0) {
    table.addRow({"Expiring", std::to_string(status.expiringSoon) + " within a week"});
  }
  if (status.error && status.agentAnswers()) {
    table.addRow({"Refusal", status.error->description()});
  }
  addOwnCard(table, status.ownCard);
  table.addRow(
      {"Programs", counted(status.servedPrograms, "program") + " served: quenlet clients"});
  table.write(out, screen);
}

void writeError(JSONWriter& json, const Error& error) {
  json.key("error").beginObject();
  json.key("domain").value(error.domain()).key("code").value(error.code());
  json.key("description").value(error.debugDescription()).endObject();
}

void writeOwnCard(JSONWriter& json, const OwnCard& card) {
  json.key("ownCard").beginObject();
  json.key("isRead").value(card.contact != nullptr);
  if (card.fault) writeError(json, *card.fault);
  json.key("faults").beginArray();
  for (const SkippedEntry& fault : card.skipped) {
    json.beginObject().key("line").value(static_cast<std::int64_t>(fault.line));
    json.key("property").value(fault.property).endObject();
  }
  json.endArray().endObject();
}

void writeJSON(std::ostream& out, const Status& status) {
  JSONWriter json;
  json.beginObject();
  json.key("donationsEnabled").value(status.donationsEnabled);
  json.key("agentAnswers").value(status.agentAnswers());
  if (status.donationCount) {
    json.key("donationCount").value(static_cast<std::int64_t>(*status.donationCount));
    json.key("expiringWithinAWeek").value(static_cast<std::int64_t>(status.expiringSoon));
  }
  if (status.error) writeError(json, *status.error);
  writeOwnCard(json, status.ownCard);
  json.key("servedPrograms").value(static_cast<std::int64_t>(status.servedPrograms));
  out << json.endObject().text() << "\n";
}

// "status": shows the preference, whether an agent answers a request for its donations, and what
// the owner may want to see to.
class StatusWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode run(Session& session) const;

  bool asJSON = false;
};

void StatusWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("status", "Show the preference and whether an agent answers");
  word->add_flag("--json", asJSON, "As JSON, for programs");
  word->footer("Ends with 0 when an agent answers, even if it refuses, and with 3 when none does.");
  word->callback([this, &chosen] { chosen = [this](Session& session) { return run(session); }; });
}

ExitCode StatusWord::run(Session& session) const {
  const Result<Status> read = readStatus(session);
  if (!read.ok()) return session.failWith(read.error());
  const Status& status = read.value();
  if (asJSON) {
    writeJSON(session.out, status);
  } else {
    writeText(session.out, status, session.screen);
    session.out << std::flush;
    if (status.error) session.hintAt(*status.error);
  }
  return status.agentAnswers() ? ExitCode::done : ExitCode::noAgent;
}

}  // namespace

CommandPtr makeStatusWord() { return std::make_unique<StatusWord>(); }

}  // namespace quenlet
