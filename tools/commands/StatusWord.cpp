#include <CLI/CLI.hpp>
#include <cstddef>
#include <optional>
#include <tuple>

#include "client/waitForReply.h"
#include "platform/foundation/JSONWriter.h"
#include "tools/commands/Command.h"
#include "tools/owner/UserPreferences.h"
#include "tools/presentation/TextTable.h"

namespace quenlet {
namespace {

// "status": shows the preference, and whether an agent answers a request for its donations.
class StatusWord final : public Command {
 public:
  struct Status final {
    bool donationsEnabled = true;
    // Set when an agent answered with its donations.
    std::optional<std::size_t> donationCount;
    // Why the count is missing: no agent, no answer in time, or a refusal.
    ErrorPtr error;

    [[nodiscard]] bool agentAnswers() const;
  };

  void addTo(CLI::App& app, ChosenAction& chosen) override;

  static void writeText(std::ostream& out, const Status& status);
  static void writeJSON(std::ostream& out, const Status& status);

 private:
  [[nodiscard]] ExitCode run(Session& session) const;

  bool asJSON = false;
};

bool StatusWord::Status::agentAnswers() const { return !error || !isNoAnswer(*error); }

void StatusWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("status", "Show the preference and whether an agent answers");
  word->add_flag("--json", asJSON, "As JSON, for programs");
  word->footer("Ends with 0 when an agent answers, even if it refuses, and with 3 when none does.");
  word->callback([this, &chosen] { chosen = [this](Session& session) { return run(session); }; });
}

ExitCode StatusWord::run(Session& session) const {
  const auto user = UserPreferences::open();
  if (!user.ok()) return session.failWith(user.error());
  Status status;
  status.donationsEnabled = user.value()->preferences().isDonationsEnabled();
  const auto [values, error] = waitForReply<std::shared_ptr<const DonationValues>, ErrorPtr>(
      [&](DonationsReply reply) { session.agent.meCardDonations(std::move(reply)); });
  status.error = error;
  if (values) status.donationCount = values->size();
  (asJSON ? writeJSON : writeText)(session.out, status);
  return status.agentAnswers() ? ExitCode::done : ExitCode::noAgent;
}

namespace {

const char* wordFor(const StatusWord::Status& status) {
  if (status.agentAnswers()) return "answers";
  return isNoAgent(*status.error) ? "none" : "does not answer";
}

}  // namespace

void StatusWord::writeText(std::ostream& out, const Status& status) {
  TextTable table;
  table.addRow({"Preference", status.donationsEnabled ? "enabled" : "disabled"});
  table.addRow({"Agent", wordFor(status)});
  if (status.donationCount) table.addRow({"Donations", std::to_string(*status.donationCount)});
  if (status.error && status.agentAnswers()) {
    table.addRow({"Refusal", status.error->description()});
  }
  table.write(out);
}

void StatusWord::writeJSON(std::ostream& out, const Status& status) {
  JSONWriter json;
  json.beginObject();
  json.key("donationsEnabled").value(status.donationsEnabled);
  json.key("agentAnswers").value(status.agentAnswers());
  if (status.donationCount) {
    json.key("donationCount").value(static_cast<std::int64_t>(*status.donationCount));
  }
  if (status.error) {
    json.key("error").beginObject();
    json.key("domain").value(status.error->domain()).key("code").value(status.error->code());
    json.key("description").value(status.error->debugDescription()).endObject();
  }
  out << json.endObject().text() << "\n";
}

}  // namespace

CommandPtr makeStatusWord() { return std::make_unique<StatusWord>(); }

}  // namespace quenlet
