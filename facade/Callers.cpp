#include "facade/Callers.h"

#include <utility>

#include "facade/FacadeError.h"

namespace quenlet {
namespace {

ErrorPtr busy() { return makeFacadeError(BusyError, "too many requests are under way"); }

}  // namespace

// What is under way for one app or process, over all of its connections.
struct Callers::Account final {
  struct Waiting final {
    CallerIdentity caller;
    Request request;
    IdleEnd::Hold hold;
    std::shared_ptr<void> mark;
  };
  std::deque<Waiting> waiting;
  std::size_t running = 0;
  std::size_t outstandingBytes = 0;
};

struct Callers::Caller final {
  std::optional<CallerIdentity> identity = {};
  std::shared_ptr<Account> account = {};
  std::chrono::steady_clock::time_point identified = {};
  // What came before the caller was known, and what keeps the program from ending meanwhile.
  bool isBeingIdentified = false;
  std::vector<Request> early = {};
  IdleEnd::Hold hold = {};
  // Each request of this connection's that is under way has a copy.
  std::shared_ptr<void> mark = std::make_shared<char>();

  [[nodiscard]] bool isIdle() const { return !isBeingIdentified && mark.use_count() == 1; }
};

Callers::Callers(Identify identifyCaller, IdleEnd& idleEnd, const CallerLimits& given, Clock clock)
    : identify(std::move(identifyCaller)), idle(idleEnd), limits(given), now(std::move(clock)) {}

Callers::~Callers() = default;

bool Callers::makeRoom() {
  if (callers.size() < limits.connections) return true;
  // Who has nothing under way is identified anew the next time.
  std::erase_if(callers, [](const auto& entry) { return entry.second.isIdle(); });
  return callers.size() < limits.connections;
}

void Callers::beginToIdentify(const std::string& uniqueName, Caller& caller) {
  caller.identity.reset();
  caller.isBeingIdentified = true;
  caller.hold = idle.hold();
  identify(uniqueName, [weak = weak_from_this(), uniqueName](const auto& answer) {
    if (const auto self = weak.lock()) self->learn(uniqueName, answer);
  });
}

void Callers::serve(const std::string& uniqueName, Request request) {
  if (outstanding >= limits.allOutstanding ||
      request.sizeInBytes > limits.allOutstandingBytes - outstandingBytes) {
    return request.refuse(busy());
  }
  const auto found = callers.find(uniqueName);
  const bool isKnown = found != callers.end();
  if (!isKnown && !makeRoom()) return request.refuse(busy());
  Caller& caller = isKnown ? found->second : callers[uniqueName];
  const bool isOutdated = !caller.identity || now() - caller.identified > limits.identity;
  if (isOutdated && !caller.isBeingIdentified) beginToIdentify(uniqueName, caller);
  if (caller.identity) return enqueue(caller, std::move(request));
  std::size_t bytes = request.sizeInBytes;
  for (const Request& early : caller.early) bytes += early.sizeInBytes;
  if (caller.early.size() >= limits.outstanding || bytes > limits.outstandingBytes) {
    return request.refuse(busy());
  }
  ++outstanding;
  outstandingBytes += request.sizeInBytes;
  caller.early.push_back(std::move(request));
}

void Callers::learn(const std::string& uniqueName, const Result<CallerIdentity>& caller) {
  const auto found = callers.find(uniqueName);
  if (found == callers.end()) return;
  std::vector<Request> early = std::exchange(found->second.early, {});
  const IdleEnd::Hold hold = std::exchange(found->second.hold, nullptr);
  found->second.isBeingIdentified = false;
  outstanding -= early.size();
  for (const Request& request : early) outstandingBytes -= request.sizeInBytes;
  if (!caller.ok()) {
    // What it asked before is still under way: it stays known, and is identified for the next call.
    if (found->second.isIdle()) callers.erase(found);
    const ErrorPtr error =
        makeFacadeError(NotPermittedError, "it cannot be told with certainty which program calls");
    for (const Request& request : early) request.refuse(error);
    return;
  }
  found->second.identity = caller.value();
  found->second.identified = now();
  found->second.account = accountOf(caller.value());
  // A copy: what runs may make the caller be forgotten.
  const Caller known = found->second;
  for (Request& request : early) enqueue(known, std::move(request));
}

std::shared_ptr<Callers::Account> Callers::accountOf(const CallerIdentity& caller) {
  std::erase_if(accounts, [](const auto& entry) { return entry.second.expired(); });
  const std::string key = caller.app ? "app " + *caller.app : std::to_string(caller.process);
  std::weak_ptr<Account>& place = accounts[key];
  if (auto account = place.lock()) return account;
  auto account = std::make_shared<Account>();
  place = account;
  return account;
}

void Callers::enqueue(const Caller& caller, Request request) {
  const std::shared_ptr<Account> account = caller.account;
  if (account->running + account->waiting.size() >= limits.outstanding ||
      request.sizeInBytes > limits.outstandingBytes - account->outstandingBytes) {
    return request.refuse(busy());
  }
  ++outstanding;
  outstandingBytes += request.sizeInBytes;
  account->outstandingBytes += request.sizeInBytes;
  account->waiting.push_back({*caller.identity, std::move(request), idle.hold(), caller.mark});
  runNext(account);
}

void Callers::runNext(const std::shared_ptr<Account>& account) {
  if (account->running >= limits.running || account->waiting.empty()) return;
  const Account::Waiting next = std::move(account->waiting.front());
  account->waiting.pop_front();
  ++account->running;
  const Ticket ticket(nullptr, [weak = weak_from_this(), account, hold = next.hold,
                                mark = next.mark, bytes = next.request.sizeInBytes](void*) {
    if (const auto self = weak.lock()) self->end(account, bytes);
  });
  next.request.run(next.caller, ticket);
}

void Callers::end(const std::shared_ptr<Account>& account, std::size_t sizeInBytes) {
  --outstanding;
  outstandingBytes -= sizeInBytes;
  account->outstandingBytes -= sizeInBytes;
  --account->running;
  runNext(account);
}

bool Callers::knows(const std::string& uniqueName) const { return callers.contains(uniqueName); }

void Callers::forget(const std::string& uniqueName) {
  const auto found = callers.find(uniqueName);
  if (found == callers.end()) return;
  outstanding -= found->second.early.size();
  for (const Request& request : found->second.early) outstandingBytes -= request.sizeInBytes;
  callers.erase(found);
}

}  // namespace quenlet
