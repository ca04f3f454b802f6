#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/AgentEnvironmentProtocol.h"
#include "platform/contacts/PersonNameComponents.h"

namespace quenlet {

// The two facts that the agent needs from the owner's own card. Thread-safe.
class CuratedInfoProviderProtocol {
 public:
  virtual ~CuratedInfoProviderProtocol() = default;
  // Absent without a card; a card without a name gives a name without components.
  [[nodiscard]] virtual std::optional<PersonNameComponents> curatedName() const = 0;
  // In normal form, without duplicates, ascending.
  [[nodiscard]] virtual std::vector<std::string> curatedEmailAddresses() const = 0;
  // Reads the card now and after each change. Calls `changeHandler` whenever one of the facts has
  // changed, on the thread that noticed, which may be the calling one.
  virtual void startMonitoring(std::shared_ptr<AgentEnvironmentProtocol> environment,
                               std::function<void()> changeHandler) = 0;
};

}  // namespace quenlet
