#include "tools/commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cerrno>

#include "tools/commands/Command.h"
#include "tools/commands/WordSearch.h"
#include "tools/help/HelpText.h"
#include "tools/presentation/TerminalText.h"

namespace quenlet {
namespace {

constexpr char description[] =
    "Donates values that describe you (names, addresses, numbers, an image) to your agent, and\n"
    "shows the me card that the agent makes of all donations.";

constexpr char generalFooter[] =
    "Examples:\n"
    "  quenlet donate me.vcf\n"
    "  quenlet card\n"
    "  quenlet list --json\n"
    "  quenlet forget org.example.mail\n"
    "\n"
    "Ends with 0 when done, 1 when the agent said no or a file failed, 2 after wrong usage, 3 "
    "when\n"
    "there is no agent. Errors are written as \"quenlet: <domain> <code>: <sentence>\".\n"
    "\"quenlet help WORD\" tells more about a word.";

// All words of the program, and the action that was chosen.
struct Words final {
  CLI::App app{description, "quenlet"};
  const std::array<CommandPtr, 23> commands = {
      makeDonateWord(),     makeUndoWord(),      makeCardWord(),        makeMeWord(),
      makeListWord(),       makeWhyWord(),       makeShowWord(),        makeRemovalWords(),
      makeRejectionWords(), makeUnrejectWords(), makeBackupWords(),     makeAccountWord(),
      makeExtensionWord(),  makeCollectWord(),   makePreferenceWords(), makeFileWords(),
      makeStatusWord(),     makeClientsWord(),   makeAllowWord(),       makeDoctorWord(),
      makeStatsWord(),      makeWatchWord(),     makeCompleteWord()};
  ChosenAction chosen;
  bool isWide = false;

  explicit Words(const Screen& screen) {
    // Before the words are added, which inherit it.
    app.formatter_fn([screen](const CLI::App* word, const std::string&, CLI::AppFormatMode) {
      return helpText(HelpPage::of(*word), screen);
    });
    app.set_help_flag("-h,--help", "Print this help");
    // So that the options of all words may stand behind the word, too.
    app.fallthrough();
    app.add_flag("--wide", isWide, "Show tables whole, however wide the terminal is");
    for (const CommandPtr& command : commands) command->addTo(app, chosen);
    CLI::App* help = app.add_subcommand("help", "Tell more about a word");
    help->add_option("WORD", explained, "The word; without one, all are shown")->type_name("");
    help->callback([this] { chosen = [this](Session& session) { return explain(session); }; });
    app.require_subcommand(0, 1);
    app.set_version_flag("--version", std::string("quenlet ") + QUENLET_VERSION,
                         "Print the version");
    app.footer(generalFooter);
  }

 private:
  [[nodiscard]] ExitCode explain(Session& session) const {
    std::vector<std::string> arguments = explained;
    arguments.emplace_back("--help");
    return CommandLine::run(std::move(arguments), session);
  }

  std::vector<std::string> explained;
};

Advice hintAtHelp(const CLI::App& word) { return Advice::command(fullName(word) + " --help"); }

ExitCode failWithUnknown(const Session& session, const CLI::App& above, const std::string& text) {
  std::string hint;
  for (const std::string& word : similarWords(above, text)) {
    hint += (hint.empty() ? "did you mean " : " or ") + word;
  }
  return session.failWithUsage("unknown word: " + text, {},
                               hint.empty() ? hintAtHelp(above) : Advice(hint + "?"));
}

// For a request for help or for the version, and for wrong usage of `word`.
ExitCode tellUsage(const Words& words, const CLI::App& word, const CLI::ParseError& failure,
                   const Session& session) {
  if (failure.get_exit_code() != 0) {
    return session.failWithUsage(failure.what(), {}, hintAtHelp(word));
  }
  words.app.exit(failure, session.out, session.err);
  return ExitCode::done;
}

}  // namespace

HelpPage CommandLine::help() {
  const Words words({});
  return HelpPage::of(words.app);
}

ExitCode CommandLine::run(std::vector<std::string> arguments, Session& session) {
  Words words(session.screen);
  const NamedWord named = findWord(words.app, arguments);
  if (named.unknown) return failWithUnknown(session, *named.word, *named.unknown);
  // The parser expects the arguments in reverse order.
  std::reverse(arguments.begin(), arguments.end());
  try {
    words.app.parse(std::move(arguments));
  } catch (const CLI::ParseError& failure) {
    return tellUsage(words, *named.word, failure, session);
  }
  if (!words.chosen) {
    return session.failWithUsage("it takes a word that says what to do", {}, hintAtHelp(words.app));
  }
  if (words.isWide) session.screen.width = Screen::unlimitedWidth;
  const ExitCode code = words.chosen(session);
  session.out.flush();
  if (session.out || code != ExitCode::done) return code;
  return session.failWith(makePosixError(EIO, "write to standard output"));
}

}  // namespace quenlet
