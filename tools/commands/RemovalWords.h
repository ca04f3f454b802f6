#pragma once

#include <string>
#include <vector>

#include "tools/commands/Session.h"

namespace quenlet {

// "remove" and "forget": withdraw donations by identifier or by donor. Call addTo() and one
// action once.
class RemovalWords final {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen);

 private:
  [[nodiscard]] ExitCode remove(Session& session) const;
  [[nodiscard]] ExitCode forget(Session& session) const;

  std::vector<std::string> donationIdentifiers;
  std::string bundleIdentifier;
};

}  // namespace quenlet
