#include "tools/commands/Session.h"

#include "platform/ipc/ServiceInterface.h"
#include "tools/commands/Hints.h"
#include "tools/presentation/TerminalText.h"

namespace quenlet {

namespace {

bool isServiceError(const Error& error, ServiceErrorCode code) {
  return error.domain() == ServiceErrorDomain && error.code() == static_cast<std::int64_t>(code);
}

}  // namespace

bool isNoAgent(const Error& error) {
  return isServiceError(error, ServiceErrorCode::noService) ||
         isServiceError(error, ServiceErrorCode::connectionBroken);
}

bool isNoAnswer(const Error& error) {
  return isNoAgent(error) || isServiceError(error, ServiceErrorCode::timedOut);
}

ExitCode Session::failWith(const ErrorPtr& error) const {
  err << "quenlet: " << printable(error->description()) << "\n" << std::flush;
  hintAt(*error);
  return isNoAnswer(*error) ? ExitCode::noAgent : ExitCode::refused;
}

void Session::hintAt(const Error& error) const {
  for (const std::string& line : hintsFor(error)) err << "hint: " << printable(line) << "\n";
  err << std::flush;
}

ExitCode Session::refuse(const char* domain, const std::string& sentence, const std::string& hint,
                         ExitCode code) const {
  err << "quenlet: " << domain << " " << static_cast<int>(code) << ": " << printable(sentence)
      << "\nhint: " << printable(hint) << "\n"
      << std::flush;
  return code;
}

ExitCode Session::failWithUsage(const std::string& sentence, const std::vector<std::string>& lines,
                                const std::string& hint) const {
  err << "quenlet: usage " << static_cast<int>(ExitCode::usage) << ": " << printable(sentence)
      << "\n";
  for (const std::string& line : lines) err << "  " << printable(line) << "\n";
  if (!hint.empty()) err << "hint: " << printable(hint) << "\n";
  err << std::flush;
  return ExitCode::usage;
}

ExitCode Session::finishWith(const ErrorPtr& error) const {
  return error ? failWith(error) : ExitCode::done;
}

}  // namespace quenlet
