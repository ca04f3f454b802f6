#pragma once

#include <cstddef>
#include <optional>

#include "tools/commands/Session.h"

namespace quenlet {

// "status": the preference, and what an agent says when asked for its donations. Declared once, run
// once.
class StatusWord final {
 public:
  struct Status final {
    bool donationsEnabled = true;
    // Of an agent that answered with its donations.
    std::optional<std::size_t> donationCount;
    // Why there is no count: no agent, no answer of it in time, or its refusal.
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
