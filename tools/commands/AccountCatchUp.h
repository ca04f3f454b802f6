#pragma once

#include <filesystem>
#include <memory>

#include "platform/files/DataProxy.h"
#include "platform/foundation/Error.h"

namespace quenlet {

// Has the next agent read all accounts anew, for one that changed while none was there to hear of
// it: takes the accounts out of the table of what has been read, "bundle_versions.plist".
//
// The table is the agent's. It is changed under the lock that an agent holds for its whole life,
// so that no agent can have the old table in its memory and write it back. An agent that is started
// in that instant tries for the lock for a second, so it is held for one small write only. One
// thread.
class AccountCatchUp final {
 public:
  AccountCatchUp(std::filesystem::path donationsDirectory, std::shared_ptr<DataProxy> dataProxy);

  // Null once it is settled and durable. An error with code EWOULDBLOCK, and nothing has happened,
  // while an agent runs, be it one that is starting or ending and does not answer.
  [[nodiscard]] ErrorPtr schedule() const;

 private:
  const std::filesystem::path directory;
  const std::shared_ptr<DataProxy> dataProxy;
};

}  // namespace quenlet
