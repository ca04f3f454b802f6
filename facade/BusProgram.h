#pragma once

#include <memory>
#include <string>

#include "bus/BusConnection.h"
#include "facade/AgentFacade.h"
#include "facade/CallerIdentifier.h"
#include "facade/FacadeObject.h"
#include "platform/preferences/DonationPreferences.h"

namespace quenlet {

// The program that stands for the agent on the user's bus. The bus starts it when somebody calls;
// it ends once nobody has called for half a minute and nobody watches the card: then it gives the
// name back first, so that the next call starts another, and answers what had come until then.
class BusProgram final {
 public:
  static constexpr double idleSeconds = 30;
  // What has begun may end within this time.
  static constexpr double mostSecondsToLeave = 5;

  // All of them outlive it. `prefix` is where quenlet is installed.
  BusProgram(BusLoop& runs, BusConnection& opened, DonationPreferences& read,
             const std::filesystem::path& prefix);
  ~BusProgram();
  BusProgram(const BusProgram&) = delete;
  BusProgram& operator=(const BusProgram&) = delete;

  // Serves until it has been idle, or until leave(). An error when the name or the object cannot be
  // had, or the bus is lost.
  [[nodiscard]] ErrorPtr run();
  // Gives the name back, and ends run() when what has begun is done.
  void leave();

 private:
  [[nodiscard]] ErrorPtr start();
  void claimName();
  void followOwners();
  void countMessage();
  void receive(const std::shared_ptr<BusRequest>& request);
  void look(const std::string& watcher, const CallerIdentity& known, Watchers::Outcome outcome);
  void leaveWhenDone(double waitedSeconds);
  void fail(ErrorPtr error);

  BusLoop& loop;
  BusConnection& bus;
  DonationPreferences& preferences;
  Client agent;
  IdleEnd idle;
  PermissionStore store;
  OwnerQuestion question;
  AppGate apps;
  Watchers watchers;
  AgentFacade facade;
  CallerIdentifier identifier;
  const std::shared_ptr<Callers> callers;
  std::unique_ptr<FacadeObject> object;
  std::shared_ptr<Cancelable> agentWatch;
  std::size_t received = 0;
  bool isLeaving = false;
  ErrorPtr failure;
};

}  // namespace quenlet
