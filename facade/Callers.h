#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "facade/CallerIdentity.h"
#include "facade/IdleEnd.h"
#include "quenlet/Result.h"

namespace quenlet {

// How much of callers' is dealt with at a time. A value type; tests lower it.
struct CallerLimits final {
  // For one app, or one process of the host, however many connections it has.
  std::size_t running = 4;
  std::size_t outstanding = 64;
  std::size_t outstandingBytes = std::size_t{48} << 20;
  // For all of them together.
  std::size_t allOutstanding = 1024;
  std::size_t allOutstandingBytes = std::size_t{192} << 20;
  std::size_t connections = 2048;
  // How long it counts who has a connection: entitlements may be taken away.
  std::chrono::seconds identity{5};
};

// Who is calling, and what is under way for whom: each caller is identified, again after a while,
// and what it asks runs in its order, a few at a time, so that nobody has to wait behind all that
// another one asks. What is beyond the limits is refused at once. Of connections that are kept,
// those with nothing under way make room for others: with anything under way there are fewer than
// all places. Use on the loop's thread.
class Callers final : public std::enable_shared_from_this<Callers> {
 public:
  // Keeps a request among those under way, until the last copy is dropped.
  using Ticket = std::shared_ptr<void>;
  struct Request final {
    std::function<void(const CallerIdentity& caller, Ticket ticket)> run;
    // Called instead: Busy, or NotPermitted for a caller that cannot be identified.
    std::function<void(const ErrorPtr& error)> refuse;
    std::size_t sizeInBytes = 0;
  };
  using Identify = std::function<void(const std::string& uniqueName,
                                      std::function<void(Result<CallerIdentity>)> reply)>;

  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  Callers(Identify identifyCaller, IdleEnd& idleEnd, const CallerLimits& given = {},
          Clock clock = std::chrono::steady_clock::now);
  ~Callers();
  Callers(const Callers&) = delete;
  Callers& operator=(const Callers&) = delete;

  // Runs the request, now or later, or refuses it.
  void serve(const std::string& uniqueName, Request request);
  // The connection has ended: what it asked still runs, but it is not known any more.
  void forget(const std::string& uniqueName);
  // Whether something of this connection's is under way and it has not ended.
  [[nodiscard]] bool knows(const std::string& uniqueName) const;

 private:
  struct Account;
  struct Caller;
  [[nodiscard]] bool makeRoom();
  void beginToIdentify(const std::string& uniqueName, Caller& caller);
  void learn(const std::string& uniqueName, const Result<CallerIdentity>& caller);
  [[nodiscard]] std::shared_ptr<Account> accountOf(const CallerIdentity& caller);
  void enqueue(const Caller& caller, Request request);
  void runNext(const std::shared_ptr<Account>& account);
  void end(const std::shared_ptr<Account>& account, std::size_t sizeInBytes);

  const Identify identify;
  IdleEnd& idle;
  const CallerLimits limits;
  const Clock now;
  std::map<std::string, Caller> callers;
  std::map<std::string, std::weak_ptr<Account>> accounts;
  std::size_t outstanding = 0;
  std::size_t outstandingBytes = 0;
};

}  // namespace quenlet
