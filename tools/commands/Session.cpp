#include "tools/commands/Session.h"

#include <unistd.h>

#include <cerrno>
#include <iostream>

#include "platform/files/DurableFileWriter.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/ipc/ServiceInterface.h"
#include "tools/owner/Hints.h"
#include "tools/presentation/TerminalText.h"

namespace quenlet {

namespace {

bool isServiceError(const Error& error, ServiceErrorCode code) {
  return error.domain() == ServiceErrorDomain && error.code() == static_cast<std::int64_t>(code);
}

// A command stays on one line.
void writeAdvice(std::ostream& stream, const Screen& screen, const std::string& lead,
                 const Advice& advice, std::size_t hanging = 0) {
  const std::string text = lead + printable(advice.text);
  if (advice.isCommand) {
    stream << text << "\n";
  } else {
    screen.writeParagraph(stream, text, 0, hanging);
  }
}

void tellBehind(const Session& session, const std::string& lead, const std::string& sentence) {
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

void Session::tell(const std::string& sentences, std::size_t indentation) const {
  errorScreen.writeParagraph(err, printable(sentences), indentation, 2);
}

void Session::warn(const std::string& sentence) const { tellBehind(*this, "quenlet: ", sentence); }

void Session::hint(const Advice& advice) const {
  writeAdvice(err, errorScreen, "hint: ", advice, 2);
  err << std::flush;
}

void Session::advise(const Advice& advice) const { writeAdvice(out, screen, "do: ", advice); }

ExitCode Session::failWith(const ErrorPtr& error) const {
  tellBehind(*this, "quenlet: ", error->description());
  hintAt(*error);
  return isNoAnswer(*error) ? ExitCode::noAgent : ExitCode::refused;
}

void Session::hintAt(const Error& error) const {
  for (const Advice& advice : hintsFor(error)) hint(advice);
}

ExitCode Session::refuse(const char* domain, const std::string& sentence,
                         const Advice& hint) const {
  tellBehind(*this, std::string("quenlet: ") + domain + " 1: ", sentence);
  this->hint(hint);
  return ExitCode::refused;
}

ExitCode Session::failWithUsage(const std::string& sentence, const std::vector<std::string>& lines,
                                const Advice& hint) const {
  tellBehind(*this, "quenlet: usage 2: ", sentence);
  for (const std::string& line : lines) tellBehind(*this, "  ", line);
  if (!hint.text.empty()) this->hint(hint);
  return ExitCode::usage;
}

ExitCode Session::finishWith(const ErrorPtr& error) const {
  return error ? failWith(error) : ExitCode::done;
}

ExitCode Session::ask(bool isConfirmed, const std::string& question) const {
  if (isConfirmed) return ExitCode::done;
  if (::isatty(STDIN_FILENO) != 1 || ::isatty(STDERR_FILENO) != 1) {
    return failWithUsage("nobody can be asked: " + question, {}, "--yes agrees to it");
  }
  err << question << " [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  if (answer.starts_with('y') || answer.starts_with('Y')) return ExitCode::done;
  err << "Nothing has changed.\n" << std::flush;
  return ExitCode::refused;
}

ExitCode Session::writeFile(const std::string& file, std::string_view data, bool replaces) const {
  PosixFileOperations operations;
  DurableFileWriter writer(operations);
  const ErrorPtr error = replaces ? writer.replace(file, data) : writer.create(file, data);
  const ExitCode code = finishWith(error);
  if (error && error->domain() == PosixErrorDomain && error->code() == EEXIST) {
    hint("--force replaces it");
  }
  return code;
}

}  // namespace quenlet
