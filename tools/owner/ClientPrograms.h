#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/ipc/EntitlementTable.h"

namespace quenlet {

// A program that a file of entitlements names.
struct ClientProgram final {
  std::string path;
  // The files that name it, in the order in which they are read; a later one overrules.
  std::vector<std::filesystem::path> files;
  // Whether its entitlements let it talk to the agent.
  bool isEntitled = false;
  // The bundles under which it may donate; nothing for all.
  std::optional<std::vector<std::string>> bundles;
  // Why the agent gives it no entitlement all the same; null when it does.
  ErrorPtr mistrust;

  [[nodiscard]] bool isServed() const { return isEntitled && !mistrust; }
};

// The programs that an agent of the same installation serves, and what it does not trust, by the
// agent's own rules. A value type.
struct ClientPrograms final {
  std::vector<ClientProgram> programs;
  std::vector<EntitlementTable::Ignored> ignored;

  // As an agent finds them that lies beside the running program.
  [[nodiscard]] static ClientPrograms read();
  // Null when no file names it.
  [[nodiscard]] const ClientProgram* find(const std::filesystem::path& executable) const;
};

}  // namespace quenlet
