#pragma once

#include <string>
#include <vector>

#include "client/CardDonor.h"
#include "tools/commands/Session.h"

namespace quenlet {

// "donate": donates the values of vCard files in one request. Call addTo() and the action once.
class DonateWord final {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen);

 private:
  [[nodiscard]] ExitCode run(Session& session) const;
  // Whether every card was read; an error when a file had no readable card.
  [[nodiscard]] Result<bool> readFiles(CardDonor& donor, Session& session) const;
  [[nodiscard]] ExitCode donate(const CardDonor& donor, Session& session) const;

  std::vector<std::string> files;
  std::string bundleIdentifier = "org.quenlet.cli";
  std::string clusterIdentifier;
  double expiresInDays = 90;
  bool dryRun = false;
};

}  // namespace quenlet
