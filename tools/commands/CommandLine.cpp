#include "tools/commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cerrno>

#include "tools/commands/Command.h"
#include "tools/presentation/TerminalText.h"

namespace quenlet {
namespace {

constexpr char description[] =
    "Donates values that describe you (names, addresses, numbers, an image) to your agent, and\n"
    "shows the me card that the agent makes of all donations.";

constexpr char footer[] =
    "Examples:\n"
    "  quenlet donate me.vcf --bundle org.example.mail\n"
    "  quenlet card\n"
    "  quenlet list --json\n"
    "  quenlet forget org.example.mail\n"
    "\n"
    "Ends with 0 when done, 1 when the agent said no or a file failed, 2 after wrong usage, 3 "
    "when\n"
    "there is no agent. Errors are written as \"quenlet: <domain> <code>: <sentence>\".\n"
    "\"quenlet WORD --help\" tells more about a word.";

// All words of the program, and the action that was chosen.
struct Words final {
  CLI::App app{description, "quenlet"};
  const std::array<CommandPtr, 10> commands = {
      makeDonateWord(),     makeCardWord(),    makeListWord(),        makeRemovalWords(),
      makeRejectionWords(), makeAccountWord(), makePreferenceWords(), makeStatusWord(),
      makeStatsWord(),      makeWatchWord()};
  ChosenAction chosen;

  Words() {
    for (const CommandPtr& command : commands) command->addTo(app, chosen);
    app.require_subcommand(0, 1);
    app.footer(footer);
  }
};

ExitCode failWithUsage(const Session& session, const std::string& sentence) {
  session.err << "quenlet: usage " << static_cast<int>(ExitCode::usage) << ": "
              << printable(sentence) << "\nRun with --help for more information.\n";
  return ExitCode::usage;
}

// For a request for help, and for wrong usage.
ExitCode tellUsage(const Words& words, const CLI::ParseError& failure, const Session& session) {
  if (failure.get_exit_code() != 0) return failWithUsage(session, failure.what());
  words.app.exit(failure, session.out, session.err);
  return ExitCode::done;
}

}  // namespace

ExitCode CommandLine::run(std::vector<std::string> arguments, Session& session) {
  Words words;
  // The parser expects the arguments in reverse order.
  std::reverse(arguments.begin(), arguments.end());
  try {
    words.app.parse(std::move(arguments));
  } catch (const CLI::ParseError& failure) {
    return tellUsage(words, failure, session);
  }
  if (!words.chosen) return failWithUsage(session, "it takes a word that says what to do");
  const ExitCode code = words.chosen(session);
  session.out.flush();
  if (session.out || code != ExitCode::done) return code;
  return session.failWith(makePosixError(EIO, "write to standard output"));
}

}  // namespace quenlet
