#pragma once

#include <memory>
#include <string>
#include <vector>

#include "bus/BusRequest.h"
#include "facade/AppGate.h"
#include "facade/Callers.h"
#include "facade/HostGate.h"
#include "facade/Watchers.h"
#include "quenlet/Client.h"

namespace quenlet {

// What the agent's methods on the bus do, for callers that are known:
//
//   method                              | program of the host  | sandboxed app
//   Donate                              | entitlement          | the owner's word on "donate"
//   RemoveDonations, RemoveBundle,      | entitlement          | its own donations
//   ListDonations                       |                      |
//   GetCard, GetVCard, Watch            | entitlement          | the owner's word on the card
//   Unwatch                             | everybody            | everybody
//   ChangeAccount, RejectDonation,      | entitlement          | never
//   RejectCluster, RemoveAllRejections  |                      |
//
// Use on the loop's thread; must outlive the client's handlers.
class AgentFacade final {
 public:
  using Requests = std::shared_ptr<BusRequest>;

  // Whether the connection of a call that is under way has not ended, by its unique name.
  using IsConnected = std::function<bool(const std::string& uniqueName)>;

  AgentFacade(Client& client, AppGate& appGate, Watchers& cardWatchers, IsConnected knows)
      : agent(client),
        apps(appGate),
        host(client),
        watchers(cardWatchers),
        isConnected(std::move(knows)) {}

  // Answers the request; the ticket is kept until then. The arguments are of the method's
  // signature.
  void serve(const Requests& request, const BusValues& arguments, const CallerIdentity& caller,
             const Callers::Ticket& ticket);

 private:
  // One call, until it is answered.
  struct Call;
  using CallPtr = std::shared_ptr<const Call>;
  using Operation = void (AgentFacade::*)(const CallPtr&);
  [[nodiscard]] static Operation operationFor(const std::string& member);

  void donate(const CallPtr& call);
  void donateForApp(const CallPtr& call, std::vector<Donation> donations);
  void removeDonations(const CallPtr& call);
  void removeBundle(const CallPtr& call);
  void listDonations(const CallPtr& call);
  void getCard(const CallPtr& call);
  void getVCard(const CallPtr& call);
  void watch(const CallPtr& call);
  void unwatch(const CallPtr& call);
  void changeAccount(const CallPtr& call);
  void rejectDonation(const CallPtr& call);
  void rejectCluster(const CallPtr& call);
  void removeAllRejections(const CallPtr& call);

  using CardUse = std::function<void(const CardKinds& kinds)>;
  // Calls `use` with the kinds that the caller may read, of those that its options name.
  void passToCard(const CallPtr& call, const BusDictionary& options, CardUse use);
  using CardAnswer = std::function<void(const Call& call, const Card& card)>;
  void answerWithCard(const CallPtr& call, CardAnswer answer);

  Client& agent;
  AppGate& apps;
  HostGate host;
  Watchers& watchers;
  const IsConnected isConnected;
};

}  // namespace quenlet
