#pragma once

#include "platform/contacts/Contact.h"
#include "protocol/CorvelProtocol.h"
#include "tools/commands/Session.h"
#include "tools/presentation/WatchReport.h"

namespace quenlet {

// Fetches the card whenever something may have changed, and reports how it differs from the one
// before. The agent is never waited for. Use on the thread on which it replies; it outlives the
// replies.
//
// The card of an agent that has ended is the one before for the next agent.
class CardWatch final {
 public:
  // `agent` does not reply before its operations have returned.
  CardWatch(Session& commandSession, CorvelProtocol& agent, WatchReport& watchReport)
      : session(commandSession), asked(agent), report(watchReport) {}
  CardWatch(const CardWatch&) = delete;
  CardWatch& operator=(const CardWatch&) = delete;

  // Fetches the card; once more after the fetch that is under way. The first outcome is reported as
  // the beginning.
  void lookAgain();
  // The same for a change that the agent has told of, which is reported even if the card has stayed
  // as it was.
  void lookAfterNotification();

 private:
  void receive(const ContactPtr& card, const ErrorPtr& error);
  void begin(const ErrorPtr& error);
  void note(const ErrorPtr& error);

  Session& session;
  CorvelProtocol& asked;
  WatchReport& report;
  bool hasBegun = false;
  bool isFetching = false;
  bool isOutdated = false;
  bool wasNotified = false;
  // Null until the agent has given one.
  ContactPtr lastCard;
  // Null while the agent gives a card.
  ErrorPtr lastRefusal;
};

}  // namespace quenlet
