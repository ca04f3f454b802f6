#pragma once

#include <optional>

#include "platform/counters/CounterValues.h"
#include "tools/commands/Session.h"

namespace quenlet {

// "stats": when the agent last tried to report, and what its reports have counted. Reads the user's
// files and asks no agent. Declared once, run once.
class StatsWord final {
 public:
  struct Stats final {
    std::optional<Date> lastAttempt;
    CounterValues counters;
  };

  void addTo(CLI::App& app, ChosenAction& chosen);

  static void writeText(std::ostream& out, const Stats& stats);
  static void writeJSON(std::ostream& out, const Stats& stats);

 private:
  [[nodiscard]] ExitCode run(Session& session) const;

  bool asJSON = false;
};

}  // namespace quenlet
