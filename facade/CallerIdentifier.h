#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include "bus/BusConnection.h"
#include "facade/CallerIdentity.h"
#include "quenlet/Result.h"

namespace quenlet {

// Finds out who has a name on the bus. The bus knows the number of the process that connected; it
// is pinned by that, looked at, and the bus asked once more. As a connection ends with its process,
// the number was not given to another in between, unless the process left the connection to a
// child: a program of the host that means to deceive can do as much by running another program. A
// program of the host is examined by the agent's own rules, with the entitlements of that moment.
// Use on the loop's thread; must outlive what it has begun.
class CallerIdentifier final {
 public:
  using Reply = std::function<void(Result<CallerIdentity> caller)>;

  // `installation`: the prefix that the agent has, whose entitlements count beside the system's.
  CallerIdentifier(BusConnection& connection, std::filesystem::path installation)
      : bus(connection), prefix(std::move(installation)) {}

  // `uniqueName` as in ":1.42". An error for a caller that cannot be told with certainty, or is
  // another user's.
  void identify(const std::string& uniqueName, Reply reply);

 private:
  void askBus(const std::string& uniqueName, BusConnection::ReplyHandler handler);
  [[nodiscard]] Result<CallerIdentity> examine(pid_t process, int pidfd) const;

  BusConnection& bus;
  const std::filesystem::path prefix;
};

}  // namespace quenlet
