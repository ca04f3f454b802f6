#include <CLI/CLI.hpp>
#include <string>

#include "platform/foundation/JSONWriter.h"
#include "tools/commands/Command.h"
#include "tools/owner/ClientPrograms.h"
#include "tools/presentation/TextTable.h"

namespace quenlet {
namespace {

std::string stateOf(const ClientProgram& program) {
  if (program.mistrust) return "not served: " + program.mistrust->debugDescription();
  return program.isEntitled ? "served" : "not served: its entitlements do not grant it";
}

std::string bundlesOf(const ClientProgram& program) {
  if (!program.bundles) return "all";
  std::string text;
  for (const std::string& bundle : *program.bundles) text += (text.empty() ? "" : ", ") + bundle;
  return text.empty() ? "none" : text;
}

std::string filesOf(const ClientProgram& program) {
  std::string text;
  for (const auto& file : program.files) text += (text.empty() ? "" : ", ") + file.native();
  return text;
}

void writeText(std::ostream& out, const ClientPrograms& clients, const Screen& screen) {
  TextTable table({"PROGRAM", "DONATES AS", "STATE", "NAMED IN"});
  for (const ClientProgram& program : clients.programs) {
    table.addRow({program.path, bundlesOf(program), stateOf(program), filesOf(program)});
  }
  if (table.empty()) {
    out << "No program is entitled.\n";
  } else {
    table.write(out, screen);
  }
  if (clients.ignored.empty()) return;
  TextTable ignored({"IGNORED", "BECAUSE"});
  for (const auto& [path, reason] : clients.ignored) ignored.addRow({path.native(), reason});
  out << "\n";
  ignored.write(out, screen);
}

void writeProgram(JSONWriter& json, const ClientProgram& program) {
  json.beginObject().key("program").value(program.path);
  json.key("served").value(program.isServed());
  if (program.mistrust) json.key("mistrust").value(program.mistrust->debugDescription());
  if (program.bundles) {
    json.key("bundles").beginArray();
    for (const std::string& bundle : *program.bundles) json.value(bundle);
    json.endArray();
  }
  json.key("files").beginArray();
  for (const auto& file : program.files) json.value(file.native());
  json.endArray().endObject();
}

void writeJSON(std::ostream& out, const ClientPrograms& clients) {
  JSONWriter json;
  json.beginObject().key("programs").beginArray();
  for (const ClientProgram& program : clients.programs) writeProgram(json, program);
  json.endArray().key("ignored").beginArray();
  for (const auto& [path, reason] : clients.ignored) {
    json.beginObject().key("path").value(path.native()).key("reason").value(reason).endObject();
  }
  out << json.endArray().endObject().text() << "\n";
}

// "clients": shows which programs the agent serves.
class ClientsWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  bool asJSON = false;
};

void ClientsWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("clients", "Show which programs may talk to the agent");
  word->add_flag("--json", asJSON, "As JSON, for programs");
  word->footer(
      "Read from the files of entitlements of this installation and of /etc; asks no agent.");
  word->callback([this, &chosen] {
    chosen = [this](Session& session) {
      const ClientPrograms clients = ClientPrograms::read();
      if (asJSON) {
        writeJSON(session.out, clients);
      } else {
        writeText(session.out, clients, session.screen);
      }
      return ExitCode::done;
    };
  });
}

}  // namespace

CommandPtr makeClientsWord() { return std::make_unique<ClientsWord>(); }

}  // namespace quenlet
