#pragma once

#include <string>
#include <utility>
#include <vector>

namespace quenlet {

// What the user can do about a finding or an error. A value.
struct Advice final {
  // Implicit: most advice is a sentence.
  Advice(const char* sentence) : text(sentence) {}
  Advice(std::string sentence) : text(std::move(sentence)) {}

  // A command for a shell, perhaps behind a few words and a colon. It is shown on one line, so that
  // it can be copied. Words in it that a shell could read otherwise must be quoted.
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
