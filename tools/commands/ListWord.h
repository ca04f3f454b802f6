#pragma once

#include "tools/commands/Session.h"

namespace quenlet {

// "list": shows all donations, in the agent's order. Call addTo() and the action once.
class ListWord final {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen);

 private:
  [[nodiscard]] ExitCode run(Session& session) const;

  bool asJSON = false;
};

}  // namespace quenlet
