#include "modems/DaemonFollower.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "bus/BusError.h"

namespace quenlet {
namespace {

// A daemon's own sentence may hold the number of a card.
ErrorPtr withoutSentence(const char* sentence, const Error& error) {
  const std::string name = busErrorName(error);
  return makeError(error.domain(), error.code(), sentence + (name.empty() ? "" : ": " + name));
}

}  // namespace

DaemonFollower::DaemonFollower(After runAfter, BusConnection& bus,
                               std::unique_ptr<ModemDaemonProtocol> followed, Handler handler)
    : after(std::move(runAfter)),
      bus(bus),
      daemon(std::move(followed)),
      handler(std::move(handler)),
      problems(daemon->name()) {
  // Before the first reading, so that nothing is missed in between.
  for (const BusSignalMatch& match : daemon->signals()) {
    watches.push_back(bus.onSignal(match, [this](const BusSignal& signal) {
      if (daemon->isNews(signal)) read();
    }));
  }
  watches.push_back(
      bus.onOwnerChange(daemon->name(), [this](const std::string& owner) { follow(owner); }));
  read();
}

DaemonFollower::~DaemonFollower() {
  for (const auto& watch : watches) watch->cancel();
  cancelCalls();
}

void DaemonFollower::cancelCalls() {
  for (const auto& call : std::exchange(calls, {})) call->cancel();
  if (const auto waiting = std::exchange(nextTry, nullptr)) waiting->cancel();
}

// What was asked of a daemon that has gone is not answered by the next one.
void DaemonFollower::follow(const std::string& owner) {
  cancelCalls();
  isReading = false;
  retrySeconds = firstRetrySeconds;
  if (owner.empty()) {
    handler({});
  } else {
    read();
  }
}

void DaemonFollower::read() {
  hasNews = isReading;
  if (isReading) return;
  isReading = true;
  cancelCalls();
  calls.push_back(
      bus.call(daemon->listCall(), [this](const Result<BusValues>& answer) { takeList(answer); }));
}

void DaemonFollower::takeList(const Result<BusValues>& answer) {
  if (!answer.ok()) return fail(answer.error());
  const auto listed = daemon->listed(answer.value());
  if (!listed) return fail(makePosixError(EBADMSG, "understand the list"));
  modems.clear();
  awaitedCards = 0;
  cardProblem = nullptr;
  for (const ListedModem& each : *listed) {
    const std::size_t place = modems.size();
    modems.push_back(each.modem);
    if (!each.cardCall || awaitedCards == ModemCards::maximumModems) continue;
    ++awaitedCards;
    calls.push_back(bus.call(
        *each.cardCall, [this, place](const Result<BusValues>& card) { takeCard(place, card); }));
  }
  if (awaitedCards == 0) finish();
}

void DaemonFollower::takeCard(std::size_t place, const Result<BusValues>& answer) {
  if (answer.ok()) {
    modems[place] = daemon->withCard(std::move(modems[place]), answer.value());
  } else {
    modems[place] = {modems[place].place, CardState::unknown, {}};
    cardProblem = withoutSentence("cannot read a card", *answer.error());
  }
  if (--awaitedCards == 0) finish();
}

void DaemonFollower::fail(const ErrorPtr& error) {
  isReading = false;
  if (isAbsence(*error)) {
    problems.setProblem(nullptr);
    handler({});
    return;
  }
  problems.setProblem(withoutSentence("cannot read the modems", *error));
  readLater();
}

void DaemonFollower::readLater() {
  nextTry = after(retrySeconds, [this] { read(); });
  retrySeconds = std::min(2 * retrySeconds, mostRetrySeconds);
}

void DaemonFollower::finish() {
  isReading = false;
  problems.setProblem(cardProblem);
  if (!cardProblem) retrySeconds = firstRetrySeconds;
  handler(modems);
  if (hasNews) {
    read();
  } else if (cardProblem) {
    readLater();
  }
}

}  // namespace quenlet
