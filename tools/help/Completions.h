#pragma once

#include <string>

#include "tools/help/HelpPage.h"

namespace quenlet {

// Completion scripts for shells: words, options, and what their values may be. Stateless.
//
// What stands for a value in the help says what it is: FILE, WORD, BUNDLE, CLUSTER, ACCOUNT,
// REJECTION; VALUE and DONATION are donations. But for files and words, scripts ask
// "quenlet complete KIND". What it prints is donors' text, which no script evaluates.
class Completions final {
 public:
  Completions() = delete;

  [[nodiscard]] static std::string forBash(const HelpPage& program);
  [[nodiscard]] static std::string forZsh(const HelpPage& program);
  [[nodiscard]] static std::string forFish(const HelpPage& program);
};

}  // namespace quenlet
