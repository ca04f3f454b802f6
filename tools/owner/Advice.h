#pragma once

#include <string>
#include <utility>
#include <vector>

namespace quenlet {

// What the user can do about a finding. A value.
struct Advice final {
  // Implicit: most advice is a sentence.
  Advice(const char* sentence) : text(sentence) {}
  Advice(std::string sentence) : text(std::move(sentence)) {}

  // For a shell, to be shown in one piece, as it is copied from there. Quote the words in it that a
  // shell could read otherwise.
  [[nodiscard]] static Advice command(std::string line) {
    Advice advice(std::move(line));
    advice.isCommand = true;
    return advice;
  }

  std::string text;
  bool isCommand = false;
};

using Advices = std::vector<Advice>;

}  // namespace quenlet
