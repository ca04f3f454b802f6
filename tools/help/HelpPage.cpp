#include "tools/help/HelpPage.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

namespace quenlet {
namespace {

bool isShown(const CLI::Option* option) { return !option->get_group().empty(); }
bool isShown(const CLI::App* word) { return !word->get_group().empty(); }

HelpPage::Argument argumentOf(const CLI::Option& option) {
  return {option.get_name(true), option.get_description(), option.get_required(),
          option.get_expected_max() >= CLI::detail::expected_max_vector_size};
}

// "a" and "b" of "{a,b}".
std::vector<std::string> choicesOf(const std::string& checks) {
  const auto open = checks.find('{');
  const auto close = checks.find('}', open);
  if (open == std::string::npos || close == std::string::npos) return {};
  return CLI::detail::split(checks.substr(open + 1, close - open - 1), ',');
}

void append(std::string& text, const std::string& remark) {
  if (!text.empty()) text += ' ';
  text += remark;
}

HelpPage::Option optionOf(const CLI::Option& option) {
  HelpPage::Option shown;
  for (const std::string& name : option.get_snames()) shown.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) shown.names.push_back("--" + name);
  shown.text = option.get_description();
  // The parser puts the checks of a value behind its placeholder: "FORMAT:{text,json}".
  const std::string type = option.get_type_name();
  const auto end = std::min(type.find(':'), type.size());
  const bool isFlag = option.get_items_expected_max() == 0 || !option.get_fnames().empty();
  if (!isFlag || type.starts_with('[')) shown.placeholder = type.substr(0, end);
  shown.choices = choicesOf(type.substr(end));
  if (!isFlag && !option.get_default_str().empty()) {
    append(shown.text, "[" + option.get_default_str() + "]");
  }
  if (option.get_required()) append(shown.text, "(required)");
  for (const CLI::Option* other : option.get_excludes()) {
    append(shown.text, "(not with " + other->get_name() + ")");
  }
  for (const CLI::Option* other : option.get_needs()) {
    append(shown.text, "(with " + other->get_name() + " only)");
  }
  return shown;
}

void addOptions(HelpPage& page, const CLI::App& word) {
  const auto options = word.get_options(
      [](const CLI::Option* option) { return isShown(option) && option->nonpositional(); });
  for (const CLI::Option* option : options) {
    page.options.push_back(optionOf(*option));
  }
}

// Those that may stand behind a word below it as well.
void addOptionsAbove(HelpPage& page, const CLI::App& word) {
  const CLI::App* above = word.get_parent();
  if (above == nullptr) return;
  const auto options = above->get_options([above](const CLI::Option* option) {
    return isShown(option) && option->nonpositional() && option != above->get_help_ptr() &&
           option != above->get_version_ptr();
  });
  for (const CLI::Option* option : options) page.options.push_back(optionOf(*option));
  addOptionsAbove(page, *above);
}

std::vector<std::string> wordsOf(const CLI::App& word) {
  std::vector<std::string> words =
      word.get_parent() == nullptr ? std::vector<std::string>() : wordsOf(*word.get_parent());
  words.push_back(word.get_name());
  return words;
}

}  // namespace

HelpPage HelpPage::of(const CLI::App& word) {
  HelpPage page;
  page.words = wordsOf(word);
  page.summary = word.get_description();
  std::replace(page.summary.begin(), page.summary.end(), '\n', ' ');
  const auto arguments = word.get_options(
      [](const CLI::Option* option) { return isShown(option) && option->get_positional(); });
  for (const CLI::Option* argument : arguments) page.arguments.push_back(argumentOf(*argument));
  addOptions(page, word);
  addOptionsAbove(page, word);
  page.needsWord = word.get_require_subcommand_min() > 0;
  page.remarks = blocksOf(word.get_footer());
  const auto below = word.get_subcommands([](const CLI::App* one) { return isShown(one); });
  for (const CLI::App* one : below) page.pages.push_back(of(*one));
  return page;
}

std::string HelpPage::name(char separator) const {
  std::string text;
  for (const std::string& word : words) {
    if (!text.empty()) text += separator;
    text += word;
  }
  return text;
}

std::string HelpPage::usage() const {
  std::string text;
  if (!options.empty()) text += "[OPTIONS]";
  for (const Argument& argument : arguments) append(text, textOf(argument));
  if (!pages.empty()) append(text, needsWord ? "WORD" : "[WORD]");
  return text;
}

std::vector<HelpPage::Block> blocksOf(const std::string& text) {
  std::vector<HelpPage::Block> blocks;
  bool isNew = true;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const bool isParagraph = !line.starts_with(' ');
    if (line.empty()) {
      isNew = true;
    } else if (isNew || blocks.back().isParagraph != isParagraph) {
      blocks.push_back({{line}, isParagraph});
      isNew = false;
    } else if (isParagraph) {
      blocks.back().lines.back() += ' ' + line;
    } else {
      blocks.back().lines.push_back(line);
    }
  }
  return blocks;
}

std::string textOf(const HelpPage::Argument& argument) {
  const std::string name = argument.name + (argument.isRepeated ? "..." : "");
  return argument.isRequired ? name : "[" + name + "]";
}

std::string textOf(const HelpPage::Option& option) {
  std::string text = CLI::detail::join(option.names, ", ");
  if (option.takesValue()) text += ' ';
  return text + option.placeholder;
}

}  // namespace quenlet
