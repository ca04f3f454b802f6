#pragma once

#include <string>

#include "tools/commands/Session.h"

namespace quenlet {

// "card": shows the donated me card. Call addTo() and the action once.
class CardWord final {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen);

 private:
  [[nodiscard]] ExitCode run(Session& session) const;

  std::string format = "text";
};

}  // namespace quenlet
