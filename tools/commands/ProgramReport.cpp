#include "tools/commands/ProgramReport.h"

#include <sstream>

#include "platform/foundation/JSONWriter.h"
#include "tools/owner/ProgramVerdict.h"
#include "tools/owner/RunProgram.h"
#include "tools/owner/ShellWord.h"
#include "tools/presentation/TerminalText.h"

namespace quenlet {
namespace {

std::string bundlesIn(const ClientProgram& program) {
  if (!program.bundles) return "It may change what anybody donated.";
  if (program.bundles->empty()) return "It may change nothing that was donated.";
  std::string text;
  for (const std::string& bundle : *program.bundles) text += (text.empty() ? "" : ", ") + bundle;
  return "It may change what is donated under " + text + ".";
}

void writeProgramText(const Session& session, const RunProgram& run,
                      const ProgramVerdict& verdict) {
  for (const auto& script : run.scripts) session.say(script.native() + " is a script.");
  if (!run.scripts.empty()) {
    session.say(
        "The agent sees the program that reads it, and serves all scripts of that alike. What a "
        "script starts counts for itself.");
  }
  const std::string subject = run.executable.native();
  if (verdict.isServed()) {
    session.say(subject + " is served.");
  } else {
    session.say(subject + " is not served: " + verdict.reason + ".");
  }
  if (verdict.named) {
    if (verdict.isServed()) session.say(bundlesIn(*verdict.named));
    for (const auto& file : verdict.named->files) session.say("It is named in " + file.native());
  }
  for (const Advice& advice : verdict.advice) session.advise(advice);
  if (!verdict.example) return;
  std::istringstream lines(verdict.example->content);
  session.out << "\n";
  for (std::string line; std::getline(lines, line);) session.out << printable(line) << "\n";
}

void writeProgramJSON(const Session& session, const RunProgram& run,
                      const ProgramVerdict& verdict) {
  JSONWriter json;
  json.beginObject().key("executable").value(run.executable.native()).key("scripts").beginArray();
  for (const auto& script : run.scripts) json.value(script.native());
  json.endArray().key("served").value(verdict.isServed());
  if (!verdict.isServed()) json.key("reason").value(verdict.reason);
  if (verdict.named && verdict.named->bundles) {
    json.key("bundles").beginArray();
    for (const std::string& bundle : *verdict.named->bundles) json.value(bundle);
    json.endArray();
  }
  json.key("files").beginArray();
  if (verdict.named) {
    for (const auto& file : verdict.named->files) json.value(file.native());
  }
  json.endArray().key("advice").beginArray();
  for (const Advice& advice : verdict.advice) json.value(advice.text);
  json.endArray();
  if (verdict.example) {
    json.key("example").beginObject().key("file").value(verdict.example->file.native());
    json.key("content").value(verdict.example->content).endObject();
  }
  session.out << json.endObject().text() << "\n";
}

}  // namespace

ExitCode reportProgram(const Session& session, const std::filesystem::path& file, bool asJSON) {
  const Result<RunProgram> run = RunProgram::of(file);
  if (!run.ok()) {
    const ExitCode code = session.failWith(run.error());
    if (!file.has_parent_path()) {
      session.hint(Advice::command("name it by its path: command -v " + shellOperand(file)));
    }
    return code;
  }
  const ProgramVerdict verdict = ProgramVerdict::on(run.value(), ClientPrograms::read());
  (asJSON ? writeProgramJSON : writeProgramText)(session, run.value(), verdict);
  return verdict.isServed() ? ExitCode::done : ExitCode::refused;
}

}  // namespace quenlet
