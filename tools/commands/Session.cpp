#include "tools/commands/Session.h"

#include "platform/ipc/ServiceInterface.h"
#include "tools/owner/Hints.h"
#include "tools/presentation/TerminalText.h"

namespace quenlet {

namespace {

bool isServiceError(const Error& error, ServiceErrorCode code) {
  return error.domain() == ServiceErrorDomain && error.code() == static_cast<std::int64_t>(code);
}

void tell(const Session& session, const std::string& lead, const std::string& sentence) {
  session.errorScreen.writeParagraph(session.err, lead + printable(sentence), 0, 2);
  session.err << std::flush;
}

}  // namespace

bool isNoAgent(const Error& error) {
  return isServiceError(error, ServiceErrorCode::noService) ||
         isServiceError(error, ServiceErrorCode::connectionBroken);
}

bool isNoAnswer(const Error& error) {
  return isNoAgent(error) || isServiceError(error, ServiceErrorCode::timedOut);
}

void Session::say(const std::string& sentences) const {
  screen.writeParagraph(out, printable(sentences));
}

ExitCode Session::failWith(const ErrorPtr& error) const {
  tell(*this, "quenlet: ", error->description());
  hintAt(*error);
  return isNoAnswer(*error) ? ExitCode::noAgent : ExitCode::refused;
}

void Session::hintAt(const Error& error) const {
  for (const std::string& line : hintsFor(error)) tell(*this, "hint: ", line);
}

ExitCode Session::refuse(const char* domain, const std::string& sentence,
                         const std::string& hint) const {
  tell(*this, std::string("quenlet: ") + domain + " 1: ", sentence);
  tell(*this, "hint: ", hint);
  return ExitCode::refused;
}

ExitCode Session::failWithUsage(const std::string& sentence, const std::vector<std::string>& lines,
                                const std::string& hint) const {
  tell(*this, "quenlet: usage 2: ", sentence);
  for (const std::string& line : lines) tell(*this, "  ", line);
  if (!hint.empty()) tell(*this, "hint: ", hint);
  return ExitCode::usage;
}

ExitCode Session::finishWith(const ErrorPtr& error) const {
  return error ? failWith(error) : ExitCode::done;
}

}  // namespace quenlet
