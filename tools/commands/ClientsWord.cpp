#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/foundation/JSONWriter.h"
#include "tools/commands/Command.h"
#include "tools/owner/AppPermissions.h"
#include "tools/owner/ClientPrograms.h"
#include "tools/presentation/TextTable.h"

namespace quenlet {
namespace {

// A sandboxed app that the owner was asked about.
struct AllowedApp final {
  std::string identifier;
  AppPermission card;
  AppPermission donations;
};

Result<PermissionStore::All> permissionsFor(AppWish wish) {
  const auto opened = AppPermissions::open();
  if (!opened.ok()) return Result<PermissionStore::All>::failure(opened.error());
  return opened.value()->list(wish);
}

// All such apps, by their identifiers.
Result<std::vector<AllowedApp>> readAllowedApps() {
  using Apps = Result<std::vector<AllowedApp>>;
  std::map<std::string, AllowedApp> found;
  for (const AppWish wish : {AppWish::meCard, AppWish::donate}) {
    const auto all = permissionsFor(wish);
    if (!all.ok()) return Apps::failure(all.error());
    for (const auto& [identifier, permission] : all.value()) {
      AllowedApp& app = found[identifier];
      app.identifier = identifier;
      (wish == AppWish::meCard ? app.card : app.donations) = permission;
    }
  }
  std::vector<AllowedApp> apps;
  apps.reserve(found.size());
  for (auto& entry : found) apps.push_back(std::move(entry.second));
  return Apps::success(std::move(apps));
}

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

std::string wordOf(const AppPermission& permission, const std::string& yes) {
  if (permission.word == OwnersWord::unknown) return "you will be asked";
  return permission.word == OwnersWord::yes ? yes : "no";
}

std::string kindsOf(const AppPermission& permission) {
  std::string text;
  for (const CardKind kind : permission.kinds) {
    text.append(text.empty() ? "" : ", ").append(wordFor(kind));
  }
  return text;
}

void writeApps(std::ostream& out, const std::vector<AllowedApp>& apps, const Screen& screen) {
  if (apps.empty()) return;
  TextTable table({"SANDBOXED APP", "MAY READ", "MAY DONATE"});
  for (const AllowedApp& app : apps) {
    table.addRow(
        {app.identifier, wordOf(app.card, kindsOf(app.card)), wordOf(app.donations, "yes")});
  }
  out << "\n";
  table.write(out, screen);
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

// Nothing for what the owner was not asked.
void writeApp(JSONWriter& json, const AllowedApp& app) {
  json.beginObject().key("app").value(app.identifier);
  if (app.card.word != OwnersWord::unknown) {
    json.key("reads").beginArray();
    for (const CardKind kind : app.card.kinds) json.value(wordFor(kind));
    json.endArray();
  }
  if (app.donations.word != OwnersWord::unknown) {
    json.key("donates").value(app.donations.word == OwnersWord::yes);
  }
  json.endObject();
}

// Without "apps" where it is not known which there are.
void writeJSON(std::ostream& out, const ClientPrograms& clients,
               const Result<std::vector<AllowedApp>>& apps) {
  JSONWriter json;
  json.beginObject().key("programs").beginArray();
  for (const ClientProgram& program : clients.programs) writeProgram(json, program);
  json.endArray().key("ignored").beginArray();
  for (const auto& [path, reason] : clients.ignored) {
    json.beginObject().key("path").value(path.native()).key("reason").value(reason).endObject();
  }
  json.endArray();
  if (apps.ok()) {
    json.key("apps").beginArray();
    for (const AllowedApp& app : apps.value()) writeApp(json, app);
    json.endArray();
  }
  out << json.endObject().text() << "\n";
}

// "clients": shows which programs the agent serves.
class ClientsWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode run(Session& session) const;

  bool asJSON = false;
};

void ClientsWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("clients", "Show which programs may talk to the agent");
  word->add_flag("--json", asJSON, "As JSON, for programs");
  word->footer(
      "Read from the files of entitlements of this installation and of /etc, and, for sandboxed\n"
      "apps, from the desktop's permission store; asks no agent. quenlet allow changes the "
      "latter.");
  word->callback([this, &chosen] { chosen = [this](Session& session) { return run(session); }; });
}

ExitCode ClientsWord::run(Session& session) const {
  const ClientPrograms clients = ClientPrograms::read();
  const auto apps = readAllowedApps();
  if (asJSON) {
    writeJSON(session.out, clients, apps);
  } else {
    writeText(session.out, clients, session.screen);
    if (apps.ok()) writeApps(session.out, apps.value(), session.screen);
  }
  if (apps.ok()) return ExitCode::done;
  // Without a desktop no app is served. The programs are all there.
  if (apps.error()->domain() != AppPermissionsErrorDomain) return session.failWith(apps.error());
  session.hint("sandboxed apps are not listed: " + apps.error()->debugDescription());
  session.hintAt(*apps.error());
  return ExitCode::done;
}

}  // namespace

CommandPtr makeClientsWord() { return std::make_unique<ClientsWord>(); }

}  // namespace quenlet
