#pragma once

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace quenlet {

// The words that arguments begin with. Valid as long as the parser that was searched.
struct NamedWord final {
  // The last of them; the parser itself when the first argument is not a word.
  const CLI::App* word = nullptr;
  // The argument after it, if that should be a word but is not.
  std::optional<std::string> unknown;
};
[[nodiscard]] NamedWord findWord(const CLI::App& parser, const std::vector<std::string>& arguments);

// The words directly below `above` that somebody may have meant who wrote `text`, all equally
// likely.
[[nodiscard]] std::vector<std::string> similarWords(const CLI::App& above, const std::string& text);

// As it is called: "quenlet account add".
[[nodiscard]] std::string fullName(const CLI::App& word);

}  // namespace quenlet
