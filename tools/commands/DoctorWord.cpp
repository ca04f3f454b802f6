#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "platform/foundation/JSONWriter.h"
#include "tools/commands/Command.h"
#include "tools/commands/ProgramReport.h"
#include "tools/owner/HealthChecks.h"
#include "tools/presentation/TextTable.h"

namespace quenlet {
namespace {

using Findings = std::vector<std::pair<const char*, Finding>>;

void writeText(std::ostream& out, const Findings& findings, const Screen& screen) {
  TextTable table({TextTable::Column("", TextTable::Fit::whole),
                   TextTable::Column("", TextTable::Fit::whole), ""});
  for (const auto& [name, finding] : findings) {
    table.addRow({finding.isWell ? "well" : "NOT WELL", name, finding.text});
    for (const Advice& advice : finding.advice) {
      std::vector<std::string> row = {"", "", "do: " + advice.text};
      advice.isCommand ? table.addWholeRow(std::move(row)) : table.addRow(std::move(row));
    }
  }
  table.write(out, screen);
}

void writeJSON(std::ostream& out, const Findings& findings) {
  JSONWriter json;
  json.beginArray();
  for (const auto& [name, finding] : findings) {
    json.beginObject().key("check").value(name).key("well").value(finding.isWell);
    json.key("found").value(finding.text).key("advice").beginArray();
    for (const Advice& advice : finding.advice) json.value(advice.text);
    json.endArray().endObject();
  }
  out << json.endArray().text() << "\n";
}

// "doctor": looks at all that the agent and its command need; "doctor PROGRAM" at what a program
// needs to be served.
class DoctorWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode run(Session& session) const;

  std::string program;
  bool asJSON = false;
};

void DoctorWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("doctor", "Look whether all is well, and say what to do");
  CLI::Option* named =
      word->add_option("PROGRAM", program, "Only whether the agent serves it; needs no agent")
          ->type_name("");
  word->add_flag("--json", asJSON, "As JSON, for programs");
  word->footer(
      "Changes nothing. Ends with 0 when all is well, or the program is served; with 1 otherwise.\n"
      "PROGRAM is the path of a program or script. It does not need to be running.");
  word->callback([this, named, &chosen] {
    const bool asksForProgram = named->count() > 0;
    chosen = [this, asksForProgram](Session& session) {
      return asksForProgram ? reportProgram(session, program, asJSON) : run(session);
    };
  });
}

ExitCode DoctorWord::run(Session& session) const {
  Findings findings;
  for (const auto& [name, look] : healthChecks()) findings.emplace_back(name, look(session.agent));
  if (asJSON) {
    writeJSON(session.out, findings);
  } else {
    writeText(session.out, findings, session.screen);
  }
  const bool isAllWell = std::all_of(findings.begin(), findings.end(),
                                     [](const auto& found) { return found.second.isWell; });
  return isAllWell ? ExitCode::done : ExitCode::refused;
}

}  // namespace

CommandPtr makeDoctorWord() { return std::make_unique<DoctorWord>(); }

}  // namespace quenlet
