#include "tools/commands/Question.h"

#include <unistd.h>

#include <iostream>

namespace quenlet {

ExitCode askOwner(const Session& session, bool isConfirmed, const std::string& question) {
  if (isConfirmed) return ExitCode::done;
  if (::isatty(STDIN_FILENO) != 1 || ::isatty(STDERR_FILENO) != 1) {
    return session.failWithUsage("nobody can be asked: " + question, {}, "--yes agrees to it");
  }
  session.err << question << " [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  if (answer.starts_with('y') || answer.starts_with('Y')) return ExitCode::done;
  session.err << "Nothing has changed.\n" << std::flush;
  return ExitCode::refused;
}

}  // namespace quenlet
