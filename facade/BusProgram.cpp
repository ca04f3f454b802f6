#include "facade/BusProgram.h"

#include <cerrno>
#include <utility>

#include "bus/BusError.h"
#include "facade/FacadeError.h"

namespace quenlet {
namespace {

// The flag of a request for a name that is not to wait for it, and the answer that it is had.
constexpr std::uint32_t nameDoNotQueue = 4;
constexpr std::int64_t nameIsOwned = 1;

// What one call may hold: a donation's image is 8 MiB at most, and the agent takes 32 in a request.
constexpr BusLimits callLimits{.depth = 8, .values = 131072, .bytes = std::size_t{32} << 20};

}  // namespace

BusProgram::BusProgram(BusLoop& runs, BusConnection& opened, DonationPreferences& read,
                       const std::filesystem::path& prefix)
    : loop(runs),
      bus(opened),
      preferences(read),
      agent(Client::standardTimeLimit, Client::Handlers::inDispatch),
      idle(loop, idleSeconds, [this] { leave(); }),
      store(bus),
      question(bus, dialogBackendsOfSession),
      apps(store, question, [this](const auto& name) { return callers->knows(name); }),
      watchers(
          [this](Client::CardHandler handler) {
            return [following = agent.onCardChange(std::move(handler))] { following.cancel(); };
          },
          idle,
          [this](const auto& watcher, const auto& known, auto outcome) {
            look(watcher, known, std::move(outcome));
          },
          [this](const auto& watcher) {
            // One that has gone meanwhile is forgotten when the bus says so.
            static_cast<void>(object->tellCardChanged(watcher));
          }),
      facade(agent, apps, watchers, [this](const auto& name) { return callers->knows(name); }),
      identifier(bus, prefix),
      callers(std::make_shared<Callers>(
          [this](const std::string& name, CallerIdentifier::Reply reply) {
            identifier.identify(name, std::move(reply));
          },
          idle)) {}

BusProgram::~BusProgram() {
  if (agentWatch) agentWatch->cancel();
}

ErrorPtr BusProgram::run() {
  if (ErrorPtr error = start()) return error;
  const ErrorPtr lost = loop.run();
  return failure ? failure : lost;
}

ErrorPtr BusProgram::start() {
  const Result<int> descriptor = agent.fd();
  if (!descriptor.ok()) return descriptor.error();
  agentWatch = loop.watch(
      descriptor.value(), [this] { agent.dispatch(); }, BusLoop::Turn::afterMessages);
  auto put = FacadeObject::put(bus, {.call = [this](const auto& request) { receive(request); },
                                     .isDonationsEnabled =
                                         [this] {
                                           const IdleEnd::Hold asked = idle.hold();
                                           return preferences.isDonationsEnabled();
                                         },
                                     .message = [this] { countMessage(); }});
  if (!put.ok()) return put.error();
  object = std::move(put).takeValue();
  followOwners();
  claimName();
  return nullptr;
}

void BusProgram::followOwners() {
  bus.onSignal(
      {.sender = BusName, .path = BusPath, .interface = BusName, .member = "NameOwnerChanged"},
      [this](const BusSignal& signal) {
        if (signal.arguments.size() != 3) return;
        const std::string* name = signal.arguments.front().text();
        const std::string* owner = signal.arguments.back().text();
        if (name == nullptr || owner == nullptr || !owner->empty()) return;
        callers->forget(*name);
        watchers.remove(*name);
        apps.forget(*name);
      });
}

void BusProgram::claimName() {
  bus.call(callOfBus("RequestName", "su", {FacadeName, nameDoNotQueue}),
           [this](const auto& answer) {
             if (!answer.ok()) return fail(answer.error());
             const bool isOurs =
                 !answer.value().empty() && answer.value().front().integer() == nameIsOwned;
             if (!isOurs) fail(makePosixError(EADDRINUSE, "take the name on the bus"));
           });
}

void BusProgram::fail(ErrorPtr error) {
  failure = std::move(error);
  loop.stop();
}

// Calls are read before answers are given: what one caller asks beyond its limits is refused at
// once, so that the next one's calls do not wait behind it. But a flood of any kind must not hold
// up all answers.
void BusProgram::countMessage() {
  constexpr std::size_t messagesBetweenAnswers = 64;
  if (++received % messagesBetweenAnswers == 0) agent.dispatch();
}

void BusProgram::receive(const std::shared_ptr<BusRequest>& request) {
  auto read = request->arguments(callLimits);
  if (!read.ok()) {
    return busErrorName(*read.error()) == BusLimitsExceeded
               ? request->fail(TooLargeError, "the call is too large")
               : request->fail(InvalidArgsError, "the call cannot be read");
  }
  const auto arguments = std::make_shared<const BusValues>(std::move(read).takeValue());
  callers->serve(request->sender(),
                 {.run =
                      [this, request, arguments](const auto& caller, const auto& ticket) {
                        facade.serve(request, *arguments, caller, ticket);
                      },
                  .refuse =
                      [request](const ErrorPtr& error) {
                        request->fail(facadeErrorName(*error), error->debugDescription());
                      },
                  .sizeInBytes = sizeInBytes(*arguments)});
}

// Its entitlement may have been taken away since it began to watch, or the owner may have changed
// their mind.
void BusProgram::look(const std::string& watcher, const CallerIdentity& known,
                      Watchers::Outcome outcome) {
  if (!known.app) {
    return identifier.identify(watcher, [outcome = std::move(outcome)](const auto& found) {
      outcome(found.ok() ? HostGate::refusalToRead(found.value()) : found.error());
    });
  }
  apps.look(AppWish::meCard, *known.app, [outcome = std::move(outcome)](const auto& permission) {
    outcome(permission.ok() ? nullptr : permission.error());
  });
}

void BusProgram::leave() {
  if (std::exchange(isLeaving, true)) return;
  // Nobody waits for the owner or for changes here any longer than this.
  watchers.end();
  apps.end();
  bus.call(callOfBus("ReleaseName", "s", {FacadeName}), [this](const auto&) { leaveWhenDone(0); });
}

// Until the bus has confirmed it, calls by name still come here.
void BusProgram::leaveWhenDone(double waitedSeconds) {
  constexpr double pauseSeconds = 0.05;
  if (!idle.isHeld() || waitedSeconds >= mostSecondsToLeave) return loop.stop();
  loop.after(pauseSeconds, [this, waitedSeconds] { leaveWhenDone(waitedSeconds + pauseSeconds); });
}

}  // namespace quenlet
