#pragma once

#include "tools/commands/Session.h"

namespace quenlet {

// "list": shows all donations, in the agent's order. Declared once, run once.
class ListWord final {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen);

 private:
  [[nodiscard]] ExitCode run(Session& session) const;

  bool asJSON = false;
};

}  // namespace quenlet
