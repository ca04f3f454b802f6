#include "tools/help/HelpPage.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

#include "tests/support/GoldenFile.h"
#include "tools/commands/CommandLine.h"
#include "tools/help/HelpText.h"
#include "tools/help/ManualPage.h"

namespace quenlet {
namespace {

TEST(HelpPageTest, ReadsTheParsersModel) {
  CLI::App app("Tells\nthings", "tool");
  bool flag = false;
  std::string text = "json";
  std::vector<std::string> texts;
  app.add_flag("--wide", flag, "Wide");
  app.add_option("PLACE", text, "Where")->type_name("");
  app.require_subcommand();
  app.add_subcommand("secret", "Hidden")->group("");
  CLI::App* word = app.add_subcommand("say", "Says them");
  CLI::Option* quiet = word->add_flag("-q,--quiet", flag, "Quiet");
  word->add_option("--as", text, "The form")
      ->type_name("FORMAT")
      ->capture_default_str()
      ->check(CLI::IsMember({"json", "text"}))
      ->excludes(quiet);
  word->add_option("FILE", texts, "Files")->type_name("")->required();
  word->footer("One.\nTwo.\n  tool say  a\n  tool say b\nThree.\n\nFour.");

  const HelpPage program = HelpPage::of(app);
  EXPECT_EQ(program.summary, "Tells things");
  EXPECT_EQ(program.usage(), "[OPTIONS] [PLACE] WORD");
  ASSERT_EQ(program.pages.size(), 1U) << "without what is hidden";
  const HelpPage& page = program.pages.front();
  EXPECT_EQ(page.name('-'), "tool-say");
  EXPECT_EQ(page.options[2].choices, (std::vector<std::string>{"json", "text"}));
  EXPECT_EQ(helpText(page, {.width = 30}), goldenFile("tests/tools/help/help.txt"));
}

TEST(HelpTextTest, NoWordsHelpIsWiderThanATerminal) {
  const std::function<void(const HelpPage&)> look = [&](const HelpPage& page) {
    std::istringstream lines(helpText(page, {}));
    for (std::string line; std::getline(lines, line);) EXPECT_LE(displayWidth(line), 80U) << line;
    for (const HelpPage& below : page.pages) look(below);
  };
  look(CommandLine::help());
}

TEST(ManualPageTest, WritesWhatTroffPrintsAsItStands) {
  const std::pair<const char*, const char*> rows[] = {{"--json", "\\-\\-json"},
                                                      {".TH x", "\\&.TH x"},
                                                      {"'x' \"y\"", "\\(aqx\\(aq \\(dqy\\(dq"},
                                                      {"\\fB", "\\efB"},
                                                      {"~/a^b`c", "\\(ti/a\\(hab\\(gac"},
                                                      {"ü…", "\\[u00FC]\\[u2026]"}};
  for (const auto& [text, escaped] : rows) EXPECT_EQ(ManualPage::escaped(text), escaped);
}

}  // namespace
}  // namespace quenlet
