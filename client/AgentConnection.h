#pragma once

#include <functional>
#include <memory>

#include "platform/foundation/Mutex.h"
#include "platform/ipc/ServiceClient.h"
#include "quenlet/Result.h"

namespace quenlet {

// The way to the user's agent: connects when it is needed first, and anew once the connection is
// broken. Thread-safe.
class AgentConnection final {
 public:
  using Connect = std::function<Result<std::shared_ptr<ServiceClient>>()>;

  // To the user's agent, or with `connectToAgent`.
  explicit AgentConnection(Patience patience = ServiceClient::standardTimeLimit);
  explicit AgentConnection(Connect connectToAgent);
  // As stop().
  ~AgentConnection();
  AgentConnection(const AgentConnection&) = delete;
  AgentConnection& operator=(const AgentConnection&) = delete;

  // The working connection. Connecting can take as long as the time limit.
  [[nodiscard]] Result<std::shared_ptr<ServiceClient>> working() EXCLUDES(mutex);
  // Breaks the connection for good: what is under way, and all that comes, fails with
  // connectionBroken.
  void stop() EXCLUDES(mutex);

 private:
  [[nodiscard]] bool works() REQUIRES(mutex) { return current && !current->isBroken(); }

  const Connect connect;
  Mutex mutex;
  std::shared_ptr<ServiceClient> current GUARDED_BY(mutex);
  bool stopped GUARDED_BY(mutex) = false;
};

}  // namespace quenlet
