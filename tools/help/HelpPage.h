#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace quenlet {

// What the program says about one of its words, or about itself: the one source of help texts,
// manual pages and completions, read from the parser's own model. A value type.
struct HelpPage final {
  struct Argument final {
    std::string name;  // "FILE"
    std::string text;
    bool isRequired = false;
    bool isRepeated = false;
  };

  struct Option final {
    std::vector<std::string> names;  // "-h", "--help"
    // "ID"; empty for one that takes no value. "[=DAYS]" for a value that may be left out.
    std::string placeholder;
    // The values that it takes; empty when it takes others, too.
    std::vector<std::string> choices;
    std::string text;

    [[nodiscard]] bool takesValue() const {
      return !placeholder.empty() && !placeholder.starts_with('[');
    }
  };

  // A part of the remarks.
  struct Block final {
    // A paragraph has one line, which is to be wrapped; other blocks keep their lines.
    std::vector<std::string> lines;
    bool isParagraph = true;
  };

  std::vector<std::string> words;  // "quenlet", "account", "add"
  std::string summary;
  std::vector<Argument> arguments;
  // Its own, then those of the words above it.
  std::vector<Option> options;
  bool needsWord = false;  // it does nothing without one of the pages below it
  std::vector<Block> remarks;
  std::vector<HelpPage> pages;

  // Hidden words and options are left out.
  [[nodiscard]] static HelpPage of(const CLI::App& word);

  // With a separator between the words: "quenlet account add".
  [[nodiscard]] std::string name(char separator = ' ') const;
  // What may follow the name: "[OPTIONS] FILE...".
  [[nodiscard]] std::string usage() const;
};

// Paragraphs end at an empty line and at a line that begins with a blank, which stays as it is.
[[nodiscard]] std::vector<HelpPage::Block> blocksOf(const std::string& text);

// "FILE...", "[WORD]".
[[nodiscard]] std::string textOf(const HelpPage::Argument& argument);
// "-h, --help", "--bundle ID", "--expiring[=DAYS]".
[[nodiscard]] std::string textOf(const HelpPage::Option& option);

}  // namespace quenlet
