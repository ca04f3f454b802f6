#pragma once

#include <memory>
#include <string>

#include "platform/donations/CorvelProtocol.h"
#include "platform/ipc/ServiceConnection.h"

namespace quenlet {

// Turns the requests of one connection into calls of CorvelProtocol, and its answers into replies.
// Arguments that are of the right types, but no valid values, are answered with an error and do not
// reach the agent. Immutable; called on the listener's thread.
class CorvelDispatcher final : public ExportedObject {
 public:
  explicit CorvelDispatcher(std::shared_ptr<CorvelProtocol> servedAgent)
      : agent(std::move(servedAgent)) {}

  void perform(const std::string& selector, WireReader arguments, WireReply reply) override;

 private:
  void donate(WireReader arguments, WireReply reply) const;
  void removeIdentifiers(WireReader arguments, WireReply reply) const;
  void removeBundle(WireReader arguments, WireReply reply) const;
  void fetch(WireReader arguments, WireReply reply) const;
  void synchronousFetch(WireReader arguments, WireReply reply) const;
  void list(WireReader arguments, WireReply reply) const;
  void changeAccount(WireReader arguments, WireReply reply) const;
  void rejectValue(WireReader arguments, WireReply reply) const;
  void rejectCluster(WireReader arguments, WireReply reply) const;
  void removeRejections(WireReader arguments, WireReply reply) const;

  std::shared_ptr<CorvelProtocol> agent;
};

}  // namespace quenlet
