#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "facade/CallerIdentity.h"
#include "facade/IdleEnd.h"
#include "quenlet/Client.h"

namespace quenlet {

// Who wants to be told that the card has changed. The card is followed while there is anybody:
//
//   state      | add                          | first card    | first error  | last one goes, end()
//   nobody     | begins to follow: starting   |               |              |
//   starting   | waits                        | following,    | nobody; all  | nobody
//              |                              | all have been | get the error|
//              |                              | added         |              |
//   following  | is added at once             |               |              | nobody
//
// Donations that are off do not count as an error: they may come on. Before a watcher is told, its
// permission to read the card is looked up again, once for all connections of an app. NotPermitted
// takes it off the list; after any other error, which may pass, it is told all the same. Changes
// that come during such a round start another. Use on the loop's thread; must outlive what it
// follows.
class Watchers final {
 public:
  using Outcome = std::function<void(const ErrorPtr& error)>;
  // Looks whether a watcher may still read the card.
  using Look = std::function<void(const std::string& uniqueName, const CallerIdentity& watcher,
                                  Outcome outcome)>;
  using Tell = std::function<void(const std::string& uniqueName)>;
  // Calls the handler with the card as it is, then with each other one, until what it gives back
  // is called.
  using Follow = std::function<std::function<void()>(Client::CardHandler handler)>;
  using Reply = std::function<void(const ErrorPtr& error)>;

  static constexpr std::size_t mostWatchers = 1024;

  Watchers(Follow followCard, IdleEnd& idleEnd, Look lookAtOne, Tell tellOne)
      : follow(std::move(followCard)),
        idle(idleEnd),
        look(std::move(lookAtOne)),
        tell(std::move(tellOne)) {}

  // From the reply on it is told of every change; once is enough. An error when there are too many
  // already, when the card cannot be followed, or after end(). No reply when it is removed first.
  void add(const std::string& uniqueName, const CallerIdentity& watcher, Reply reply);
  void remove(const std::string& uniqueName);
  // Nobody is told of anything any more.
  void end();

 private:
  struct Waiting final {
    std::string uniqueName;
    CallerIdentity watcher;
    Reply reply;
  };
  void begin();
  void hear(const Result<Card>& card);
  void stopFollowing();
  // While a round is under way, each look has a copy.
  using Round = std::shared_ptr<void>;
  void noteChange();
  void beginRound();
  void tellThose(const std::vector<std::string>& names, const ErrorPtr& refusal);

  const Follow follow;
  IdleEnd& idle;
  const Look look;
  const Tell tell;
  std::vector<Waiting> waiting;
  std::map<std::string, CallerIdentity> watchers;
  // While the card is followed.
  IdleEnd::Hold hold;
  std::function<void()> stop;
  bool isFollowing = false;
  bool hasCard = false;
  bool hasEnded = false;
  std::weak_ptr<void> round;
  bool hasNews = false;
  // A round that ends after this has does nothing.
  std::shared_ptr<Watchers*> self = std::make_shared<Watchers*>(this);
};

}  // namespace quenlet
