#pragma once

#include <cstddef>
#include <optional>

#include "tools/commands/Session.h"

namespace quenlet {

// "status": shows the preference, and whether an agent answers a request for its donations. Call
// addTo() and the action once.
class StatusWord final {
 public:
  struct Status final {
    bool donationsEnabled = true;
    // Set when an agent answered with its donations.
    std::optional<std::size_t> donationCount;
    // Why the count is missing: no agent, no answer in time, or a refusal.
    ErrorPtr error;

    [[nodiscard]] bool agentAnswers() const;
  };

  void addTo(CLI::App& app, ChosenAction& chosen);

  static void writeText(std::ostream& out, const Status& status);
  static void writeJSON(std::ostream& out, const Status& status);

 private:
  [[nodiscard]] ExitCode run(Session& session) const;

  bool asJSON = false;
};

}  // namespace quenlet
