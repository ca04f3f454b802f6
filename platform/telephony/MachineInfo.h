#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quenlet {

// A text of shell-like assignments, as /etc/machine-info and /etc/os-release are. Stateless.
class MachineInfo final {
 public:
  MachineInfo() = delete;

  // The value of `variable`, without quotes and escapes; of several assignments the last one
  // counts. Comments and lines that are no assignment are passed over. A value without quotes ends
  // at a blank.
  [[nodiscard]] static std::optional<std::string> valueOf(std::string_view variable,
                                                          std::string_view text);
};

}  // namespace quenlet
