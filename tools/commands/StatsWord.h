#pragma once

#include <optional>

#include "platform/counters/CounterStore.h"
#include "tools/commands/Command.h"

namespace quenlet {

// "stats": shows the time of the agent's last attempt to report, and the counters. Reads the user's
// files; does not ask the agent.
class StatsWord final : public Command {
 public:
  struct Stats final {
    std::optional<Date> lastAttempt;
    CounterValues counters;
  };

  void addTo(CLI::App& app, ChosenAction& chosen) override;

  static void writeText(std::ostream& out, const Screen& screen, const Stats& stats);
  static void writeJSON(std::ostream& out, const Stats& stats);

 private:
  [[nodiscard]] ExitCode run(Session& session) const;

  bool asJSON = false;
};

}  // namespace quenlet
