#pragma once

#include "tools/commands/Session.h"

namespace quenlet {

// "watch": writes a line for each change of the donated card, until SIGINT or SIGTERM. Stateless.
// Run it before the process starts another thread.
class WatchWord final {
 public:
  WatchWord() = delete;

  static void addTo(CLI::App& app, ChosenAction& chosen);
};

}  // namespace quenlet
