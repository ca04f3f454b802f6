#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quenlet {

// Reads texts of shell-like assignments, such as /etc/machine-info and /etc/os-release. Stateless.
class MachineInfo final {
 public:
  MachineInfo() = delete;

  // The value of `variable`, without quotes and escapes; the last assignment counts. Comments and
  // other lines are skipped. An unquoted value ends at a blank.
  [[nodiscard]] static std::optional<std::string> valueOf(std::string_view variable,
                                                          std::string_view text);
};

}  // namespace quenlet
