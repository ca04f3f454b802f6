#include <CLI/CLI.hpp>
#include <string>
#include <utility>

#include "tools/commands/Command.h"
#include "tools/owner/OwnersValues.h"
#include "tools/page/OwnerPage.h"
#include "tools/page/PrivatePage.h"
#include "tools/presentation/TerminalText.h"

namespace quenlet {
namespace {

// "show": makes a page of the card and of all that is known about it, and opens it.
class ShowWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode run(Session& session) const;
  [[nodiscard]] ExitCode write(const Session& session, const std::string& page) const;
  [[nodiscard]] static ExitCode open(const Session& session, const std::string& page);

  std::string output;
  bool replaces = false;
};

void ShowWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("show", "Open a page that shows the card and its sources");
  CLI::Option* file =
      word->add_option("--output", output, "Write the page to FILE instead; - is standard output")
          ->type_name("FILE");
  word->add_flag("--force", replaces, "Replace that file if it is there")->needs(file);
  word->footer(
      "The page stands alone: it loads nothing from elsewhere and runs no script. It is kept in\n"
      "your runtime directory until the next one is made. A browser in a sandbox may not see that\n"
      "directory: use --output.");
  word->callback([this, &chosen] { chosen = [this](Session& session) { return run(session); }; });
}

ExitCode ShowWord::run(Session& session) const {
  Result<OwnersValues> values = OwnersValues::read(session.agent, session.now);
  if (!values.ok()) return session.failWith(values.error());
  ExitCode code = ExitCode::done;
  for (const ErrorPtr& problem : values.value().problems) code = session.failWith(problem);
  const std::string page = OwnerPage::of(PageContent(session.now, std::move(values).takeValue()));
  const ExitCode shown = output.empty() ? open(session, page) : write(session, page);
  return shown == ExitCode::done ? code : shown;
}

ExitCode ShowWord::write(const Session& session, const std::string& page) const {
  if (output == "-") {
    session.out << page;
    return ExitCode::done;
  }
  const ExitCode code = session.writeFile(output, page, replaces);
  if (code == ExitCode::done) session.say("Wrote " + output + ".");
  return code;
}

ExitCode ShowWord::open(const Session& session, const std::string& page) {
  const Result<std::filesystem::path> file = PrivatePage::write(page);
  if (!file.ok()) return session.failWith(file.error());
  const std::string& name = file.value().native();
  if (const std::optional<std::string> obstacle = PrivatePage::open(file.value())) {
    session.say("The page is in " + name);
    session.warn("did not open it: " + *obstacle);
    session.hint("open it with a browser, or choose its place with --output");
  } else {
    session.say("Opened " + name);
  }
  return ExitCode::done;
}

}  // namespace

CommandPtr makeShowWord() { return std::make_unique<ShowWord>(); }

}  // namespace quenlet
