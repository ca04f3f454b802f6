#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/ipc/ServiceListener.h"
#include "platform/logging/AgentLogger.h"
#include "quenlet/Result.h"

namespace quenlet {

inline constexpr char MaintenanceServiceName[] = "ovaro.quenlet.maintenance";

namespace MaintenanceSelector {

// No arguments; replies a list of texts or null, and an error or null.
inline constexpr char extensionIdentifiers[] = "extensionIdentifiers:";

}  // namespace MaintenanceSelector

// The operations of the maintenance service. Implementations say on which thread they run.
class DonationMaintenanceProtocol {
 public:
  virtual ~DonationMaintenanceProtocol() = default;
  [[nodiscard]] virtual Result<std::vector<std::string>> extensionIdentifiers() = 0;
};

// Answers maintainers, with two fixed identifiers: it shows that the service is there, and knows
// nothing of installed extensions. Stateless; any thread.
class MaintenanceAgent final : public DonationMaintenanceProtocol {
 public:
  // "hello", "world"; never an error.
  [[nodiscard]] Result<std::vector<std::string>> extensionIdentifiers() override;
};

// A named service for maintainers, apart from the agent's own. Serves every process of the user,
// without a gate, from start() to its destruction. The agent's program does not create one. Use on
// one thread at a time.
class MaintenanceService final {
 public:
  // Accepts every connection and exports one agent on all of them. Immutable; called on the
  // listener's thread.
  class ListenerDelegate;

  // Uses a listener and a logger of the current platform services. Starts nothing.
  MaintenanceService();
  ~MaintenanceService();
  MaintenanceService(const MaintenanceService&) = delete;
  MaintenanceService& operator=(const MaintenanceService&) = delete;

  // Opens the service; call it once. An error when the name is taken or cannot be opened.
  [[nodiscard]] ErrorPtr start();

  [[nodiscard]] const std::shared_ptr<ServiceListener>& listener() const { return serviceListener; }
  [[nodiscard]] const std::shared_ptr<MaintenanceAgent>& agent() const { return exportedAgent; }
  [[nodiscard]] const std::shared_ptr<AgentLogger>& logger() const { return agentLogger; }
  // Null until start().
  [[nodiscard]] const std::shared_ptr<ListenerDelegate>& listenerDelegate() const {
    return delegate;
  }
  // Lets `newDelegate` decide on all later connections.
  void setListenerDelegate(std::shared_ptr<ListenerDelegate> newDelegate);

  // `listener:shouldAcceptNewConnection:`. Exports the agent on the connection and returns true, as
  // the listener delegate does.
  bool shouldAcceptNewConnection(ServiceListener& listener,
                                 const std::shared_ptr<ServiceConnection>& newConnection);

  // The interface of DonationMaintenanceProtocol; clients send no objects.
  [[nodiscard]] static ServiceInterface makeConfiguredInterface();

 private:
  const std::shared_ptr<ServiceListener> serviceListener;
  std::shared_ptr<ListenerDelegate> delegate;
  const std::shared_ptr<MaintenanceAgent> exportedAgent = std::make_shared<MaintenanceAgent>();
  const std::shared_ptr<AgentLogger> agentLogger;
};

}  // namespace quenlet
