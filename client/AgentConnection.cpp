#include "client/AgentConnection.h"

#include <utility>

#include "protocol/CorvelInterface.h"

namespace quenlet {

AgentConnection::AgentConnection(Patience patience)
    : AgentConnection([patience] {
        return ServiceClient::connect(CorvelServiceName, makeCorvelInterface(), patience);
      }) {}

AgentConnection::AgentConnection(Connect connectToAgent) : connect(std::move(connectToAgent)) {}

AgentConnection::~AgentConnection() { stop(); }

Result<std::shared_ptr<ServiceClient>> AgentConnection::working() {
  using Working = Result<std::shared_ptr<ServiceClient>>;
  const auto ended = [] {
    return Working::failure(
        makeServiceError(ServiceErrorCode::connectionBroken, "the client has ended"));
  };
  {
    MutexLock lock(mutex);
    if (stopped) return ended();
    if (works()) return Working::success(current);
  }
  // Without the lock, since it takes time. If another thread has connected meanwhile, ours is
  // dropped.
  Working connected = connect();
  if (!connected.ok()) return connected;
  MutexLock lock(mutex);
  if (stopped) return ended();
  if (!works()) current = std::move(connected).takeValue();
  return Working::success(current);
}

void AgentConnection::stop() {
  MutexLock lock(mutex);
  stopped = true;
  if (current) current->stop();
}

}  // namespace quenlet
