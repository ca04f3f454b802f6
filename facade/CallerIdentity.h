#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace quenlet {

// Who calls over the bus. A value type.
struct CallerIdentity final {
  pid_t process = 0;
  // The identifier of a sandboxed app; nothing for a program on the host.
  std::optional<std::string> app = {};
  // For a program on the host: whether the agent would serve it itself.
  bool isEntitled = false;
  // For a program on the host: the bundles under which it may change donations; nothing for all.
  std::optional<std::vector<std::string>> bundles = {};
};

}  // namespace quenlet
