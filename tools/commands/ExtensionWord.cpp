#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>
#include <vector>

#include "platform/extensions/ExtensionCatalog.h"
#include "platform/foundation/JSONWriter.h"
#include "tools/commands/Command.h"
#include "tools/commands/OnlineAccountsSync.h"
#include "tools/owner/AvailableExtensions.h"
#include "tools/owner/CollectLock.h"
#include "tools/owner/Hints.h"
#include "tools/owner/ShellWord.h"
#include "tools/owner/WaitingAgent.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/TextTable.h"

namespace quenlet {
namespace {

using Extensions = std::vector<AvailableExtension>;
using Place = AvailableExtensions::Place;

constexpr char extensionFooter[] =
    "An extension that is switched on has a manifest in ~/.config/quenlet/extensions. The agent\n"
    "asks it when donations come on, and before its values expire; \"quenlet collect\" asks now.";

// A line of the list.
struct Listed final {
  std::string name;  // empty for an extension that is installed and not one of the available
  std::string group;
  std::string bundle;
  bool isOn = false;
  std::vector<std::string> reads;
  std::string problem = {};
};

std::vector<Listed> listOf(const AvailableExtensions& available) {
  const auto installed = ExtensionCatalog(available.directories()).read();
  std::vector<Listed> list;
  for (const AvailableExtension& extension : available.all()) {
    const std::string& bundle = extension.manifest.bundleIdentifier;
    list.push_back({extension.name, extension.group, bundle, installed->manifest(bundle).ok(),
                    extension.reads});
  }
  const std::size_t known = list.size();
  for (const ExtensionManifestPtr& manifest : installed->manifests) {
    const auto isKnown = [&](const Listed& listed) {
      return listed.bundle == manifest->bundleIdentifier;
    };
    const auto end = list.begin() + static_cast<std::ptrdiff_t>(known);
    if (std::any_of(list.begin(), end, isKnown)) continue;
    list.push_back({"", "", manifest->bundleIdentifier, true, {}});
  }
  for (const DamagedExtension& damaged : available.damaged()) {
    list.push_back({damaged.name, "", "", false, {}, damaged.error->description()});
  }
  return list;
}

void writeJSON(std::ostream& out, const std::vector<Listed>& list) {
  JSONWriter json;
  json.beginArray();
  for (const Listed& listed : list) {
    json.beginObject();
    if (!listed.name.empty()) json.key("name").value(listed.name);
    if (!listed.group.empty()) json.key("group").value(listed.group);
    if (!listed.problem.empty()) {
      json.key("problem").value(listed.problem).endObject();
      continue;
    }
    json.key("bundle").value(listed.bundle).key("enabled").value(listed.isOn);
    json.key("reads").beginArray();
    for (const std::string& file : listed.reads) json.value(file);
    json.endArray().endObject();
  }
  out << json.endArray().text() << "\n";
}

const char* switchStateOf(const Listed& listed) {
  if (!listed.problem.empty()) return "damaged";
  return listed.isOn ? "on" : "off";
}

void writeTable(std::ostream& out, const Screen& screen, const std::vector<Listed>& list) {
  TextTable table({"NAME",
                   "GROUP",
                   {"STATE", TextTable::Fit::whole},
                   "READS",
                   {"BUNDLE", TextTable::Fit::spare}});
  for (const Listed& listed : list) {
    std::string reads;
    for (const std::string& file : listed.reads) reads += (reads.empty() ? "" : ", ") + file;
    table.addRow({listed.name.empty() ? listed.bundle : listed.name, listed.group,
                  switchStateOf(listed), reads, listed.bundle});
  }
  table.write(out, screen);
}

// "extension enable", "disable" and "list": decide which of the installed donor extensions the
// agent may ask.
class ExtensionWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  using Operation = ExitCode (ExtensionWord::*)(Session&, const AvailableExtensions&) const;

  [[nodiscard]] ExitCode enable(Session& session, const AvailableExtensions& available) const;
  [[nodiscard]] ExitCode disable(Session& session, const AvailableExtensions& available) const;
  [[nodiscard]] ExitCode list(Session& session, const AvailableExtensions& available) const;

  std::vector<std::string> names;
  bool asJSON = false;
};

void ExtensionWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("extension", "Choose which programs' files are looked into");
  word->footer(extensionFooter);
  word->require_subcommand(1);
  const auto addWord = [&](const char* name, const char* description, Operation operation) {
    CLI::App* subword = word->add_subcommand(name, description);
    subword->callback([this, &chosen, operation] {
      chosen = [this, operation](Session& session) {
        const auto available = AvailableExtensions::open();
        if (!available.ok()) return session.failWith(available.error());
        return (this->*operation)(session, available.value());
      };
    });
    return subword;
  };
  CLI::App* on = addWord("enable", "Switch extensions on; asks no agent", &ExtensionWord::enable);
  CLI::App* off = addWord("disable", "Switch extensions off and take back what they gave",
                          &ExtensionWord::disable);
  for (CLI::App* each : {on, off}) {
    each->add_option("NAME", names, "Names or groups from list")->type_name("")->required();
  }
  CLI::App* listing = addWord("list", "Show all extensions and what they read; asks no agent",
                              &ExtensionWord::list);
  listing->add_flag("--json", asJSON, "As JSON, for programs");
}

// Tells what cannot be read of the extension called `name`, or of all; whether there is something.
bool warnOfDamage(const Session& session, const AvailableExtensions& available,
                  const std::string& name = "") {
  bool isAny = false;
  for (const DamagedExtension& damaged : available.damaged()) {
    if (!name.empty() && name != damaged.name) continue;
    session.warn(damaged.error->description());
    isAny = true;
  }
  return isAny;
}

// Those that `names` name, each once; empty when there is none for one of the names, which is told.
Extensions choose(const Session& session, const AvailableExtensions& available,
                  const std::vector<std::string>& names) {
  Extensions chosen;
  for (const std::string& name : names) {
    const Extensions named = available.named(name);
    if (named.empty() && warnOfDamage(session, available, name)) return {};
    if (named.empty()) {
      session.refuse("no-match", "no extension or group is called \"" + name + "\"",
                     "quenlet extension list");
      return {};
    }
    for (const AvailableExtension& extension : named) {
      const auto isThis = [&](const AvailableExtension& other) {
        return other.name == extension.name;
      };
      if (std::none_of(chosen.begin(), chosen.end(), isThis)) chosen.push_back(extension);
    }
  }
  return chosen;
}

// Looks whether the agent will find it: it passes over what others could have written.
ErrorPtr switchOn(const AvailableExtensions& available, const AvailableExtension& extension,
                  const ExtensionCatalog& catalog) {
  if (ErrorPtr error = available.enable(extension)) return error;
  if (catalog.read()->manifest(extension.manifest.bundleIdentifier).ok()) return nullptr;
  return makeError(PosixErrorDomain, EACCES,
                   available.fileOf(extension).native() +
                       ": the agent passes it over while others can write the directories above");
}

void tellOn(const Session& session, const AvailableExtension& extension) {
  session.say("Switched on " + extension.name + " (" + extension.manifest.bundleIdentifier +
              "), which reads:");
  for (const std::string& file : extension.reads) session.out << "  " << printable(file) << "\n";
}

ExitCode ExtensionWord::enable(Session& session, const AvailableExtensions& available) const {
  const Extensions chosen = choose(session, available, names);
  if (chosen.empty()) return ExitCode::refused;
  if (names.size() > 1 || chosen.size() > 1) warnOfDamage(session, available);
  // One for all, so that it reports a bad manifest once.
  const ExtensionCatalog catalog(available.directories());
  const auto before = catalog.read();
  ExitCode code = ExitCode::done;
  bool isAnyNew = false;
  for (const AvailableExtension& extension : chosen) {
    if (before->manifest(extension.manifest.bundleIdentifier).ok()) {
      session.say(extension.name + " is on already.");
    } else if (const ErrorPtr error = switchOn(available, extension, catalog)) {
      code = session.failWith(error);
    } else {
      tellOn(session, extension);
      isAnyNew = true;
    }
  }
  if (isAnyNew) session.hint("quenlet collect asks them now");
  return code;
}

ErrorPtr forget(const Session& session, const std::string& bundle) {
  ErrorPtr error = WaitingAgent(session.agent).removeAllOf(bundle);
  // Nothing is held then, or not for long.
  return error && isNotEnabled(*error) ? nullptr : error;
}

// What an extension gave, once it is off.
ExitCode takeBackAll(Session& session, const AvailableExtension& extension) {
  const std::string& bundle = extension.manifest.bundleIdentifier;
  if (bundle == OnlineAccountsSync::bundleIdentifier) {
    const auto accounts = UserAccounts::open();
    if (!accounts.ok()) return session.failWith(accounts.error());
    const ExitCode code = OnlineAccountsSync(session, *accounts.value()).withdraw();
    if (code == ExitCode::done) {
      session.say("Switched off " + extension.name + ".");
    } else {
      session.warn(extension.name + " is off, and not all that it gave is taken back");
      session.hint(Advice::command("once the agent answers: quenlet extension disable " +
                                   shellOperand(extension.name)));
    }
    return code;
  }
  const ErrorPtr error = forget(session, bundle);
  if (!error) {
    session.say("Switched off " + extension.name + ". The agent has nothing of it any more.");
    return ExitCode::done;
  }
  session.warn(extension.name + " is off, and the agent still has what it gave");
  const ExitCode code = session.failWith(error);
  session.hint(Advice::command("once an agent runs: quenlet forget " + shellOperand(bundle)));
  return code;
}

ExitCode switchOff(Session& session, const AvailableExtensions& available,
                   const AvailableExtension& extension, const ExtensionCatalog& catalog) {
  if (const ErrorPtr error = available.disable(extension)) return session.failWith(error);
  if (catalog.read()->manifest(extension.manifest.bundleIdentifier).ok()) {
    return session.refuse("not-done", extension.name + " is on for all users, or elsewhere",
                          "quenlet reject keeps single values away");
  }
  // Also when it was off before: what it gave may not have been taken back then.
  return takeBackAll(session, extension);
}

ExitCode ExtensionWord::disable(Session& session, const AvailableExtensions& available) const {
  const Extensions chosen = choose(session, available, names);
  if (chosen.empty()) return ExitCode::refused;
  // An answer on its way must not arrive after what was given is taken back.
  const auto lock = CollectLock::take([&] { session.tell("Waiting for a collect to end."); });
  if (!lock.ok()) return session.failWith(lock.error());
  const ExtensionCatalog catalog(available.directories());
  ExitCode code = ExitCode::done;
  for (const AvailableExtension& extension : chosen) {
    const ExitCode outcome = switchOff(session, available, extension, catalog);
    if (outcome != ExitCode::done) code = outcome;
  }
  return code;
}

ExitCode ExtensionWord::list(Session& session, const AvailableExtensions& available) const {
  const std::vector<Listed> list = listOf(available);
  if (asJSON) {
    writeJSON(session.out, list);
  } else if (list.empty()) {
    session.out << "No donor extension is installed.\n";
  } else {
    writeTable(session.out, session.screen, list);
  }
  warnOfDamage(session, available);
  return ExitCode::done;
}

}  // namespace

CommandPtr makeExtensionWord() { return std::make_unique<ExtensionWord>(); }

}  // namespace quenlet
