#pragma once

#include <string>

#include "tools/help/HelpPage.h"

namespace quenlet {

// Completion scripts for shells: words, options, and what their values may be. Stateless.
//
// What stands for a value in the help says what it is: FILE and PROGRAM, WORD, BUNDLE, CLUSTER,
// ACCOUNT, REJECTION; VALUE and DONATION are donations. For all except files and words, scripts ask
// "quenlet complete KIND". It prints donors' text; the scripts never evaluate it.
class Completions final {
 public:
  Completions() = delete;

  [[nodiscard]] static std::string forBash(const HelpPage& program);
  [[nodiscard]] static std::string forZsh(const HelpPage& program);
  [[nodiscard]] static std::string forFish(const HelpPage& program);
};

}  // namespace quenlet
