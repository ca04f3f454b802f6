#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/ipc/ServiceListener.h"
#include "protocol/CorvelProtocol.h"
#include "protocol/EncodedReplies.h"

namespace quenlet {

// Decodes the requests of one connection into calls of its gate, and encodes the answers. Arguments
// of the right types that are not valid values are answered with an error and never reach the
// agent; those of a client that the gate refuses are not even decoded. A request for which memory
// is short is dropped without a reply, and its client is told so. Immutable; called on the
// listener's threads.
class CorvelDispatcher final : public ExportedObject {
 public:
  // `admitsClient` tells whether the gate lets the client's calls through. All connections share
  // `replies`.
  CorvelDispatcher(std::shared_ptr<CorvelProtocol> connectionGate,
                   std::function<bool()> admitsClient, std::shared_ptr<DonationListReplies> replies)
      : gate(std::move(connectionGate)),
        gateAdmitsClient(std::move(admitsClient)),
        listReplies(std::move(replies)) {}

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

  const std::shared_ptr<CorvelProtocol> gate;
  const std::function<bool()> gateAdmitsClient;
  const std::shared_ptr<DonationListReplies> listReplies;
};

}  // namespace quenlet
