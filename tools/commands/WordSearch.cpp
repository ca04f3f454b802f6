#include "tools/commands/WordSearch.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>

namespace quenlet {
namespace {

std::vector<const CLI::App*> wordsBelow(const CLI::App& above) {
  return above.get_subcommands([](const CLI::App*) { return true; });
}

// How many letters have to be put in, left out, exchanged, or swapped with the next one.
std::size_t editDistance(const std::string& from, const std::string& to) {
  std::vector<std::vector<std::size_t>> cost(from.size() + 1,
                                             std::vector<std::size_t>(to.size() + 1));
  for (std::size_t i = 0; i <= from.size(); ++i) {
    for (std::size_t j = 0; j <= to.size(); ++j) {
      if (i == 0 || j == 0) {
        cost[i][j] = i + j;
        continue;
      }
      const std::size_t exchanged = cost[i - 1][j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
      cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, exchanged});
      const bool isSwapped = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
      if (isSwapped) cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
    }
  }
  return cost[from.size()][to.size()];
}

// The beginning of a word counts as one mistake, however much is missing.
std::size_t mistakes(const std::string& text, const std::string& word) {
  constexpr std::size_t shortestBeginning = 2;
  if (text.size() >= shortestBeginning && word.starts_with(text)) return 1;
  return editDistance(text, word);
}

}  // namespace

NamedWord findWord(const CLI::App& parser, const std::vector<std::string>& arguments) {
  NamedWord named{&parser, {}};
  for (const std::string& argument : arguments) {
    const bool isOption = argument.starts_with('-');
    // Those of the program take no values; those of a word may.
    if (isOption && named.word == &parser) continue;
    const auto words = wordsBelow(*named.word);
    if (words.empty() || isOption) break;
    const auto found = std::find_if(words.begin(), words.end(), [&](const CLI::App* word) {
      return word->get_name() == argument;
    });
    if (found == words.end()) {
      named.unknown = argument;
      break;
    }
    named.word = *found;
  }
  return named;
}

std::vector<std::string> similarWords(const CLI::App& above, const std::string& text) {
  constexpr std::size_t longestText = 30;  // no word comes near it, and the cost is its square
  std::vector<std::string> similar;
  if (text.size() > longestText) return similar;
  std::size_t fewest = 1 + text.size() / 4;
  for (const CLI::App* word : wordsBelow(above)) {
    const bool isHidden = word->get_group().empty();
    if (isHidden) continue;
    const std::size_t count = mistakes(text, word->get_name());
    if (count > fewest) continue;
    if (count < fewest) similar.clear();
    fewest = count;
    similar.push_back(word->get_name());
  }
  return similar;
}

std::string fullName(const CLI::App& word) {
  const CLI::App* above = word.get_parent();
  return above == nullptr ? word.get_name() : fullName(*above) + " " + word.get_name();
}

}  // namespace quenlet
