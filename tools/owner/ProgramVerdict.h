#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tools/owner/Advice.h"
#include "tools/owner/ClientPrograms.h"
#include "tools/owner/RunProgram.h"

namespace quenlet {

// Whether an agent of this installation serves a program, by the agent's own rules, and what has to
// be done if it does not. A value type.
struct ProgramVerdict final {
  // What the files of entitlements say; nothing when none names it.
  std::optional<ClientProgram> named;
  // Why it is not served; empty when it is.
  std::string reason;
  Advices advice;
  // A file of entitlements that would let it be served, and its content; nothing when it needs
  // none.
  struct Example final {
    std::filesystem::path file;
    std::string content;
  };
  std::optional<Example> example;

  [[nodiscard]] bool isServed() const { return reason.empty(); }
  [[nodiscard]] static ProgramVerdict on(const RunProgram& program, const ClientPrograms& clients);
};

}  // namespace quenlet
