#include "tools/commands/CardWatch.h"

#include <utility>

#include "platform/foundation/Mutex.h"

namespace quenlet {

// The way back to the loop for replies, which can come on any thread and after the loop has gone.
class CardWatch::Mailbox final {
 public:
  explicit Mailbox(EventLoop& eventLoop) : loop(&eventLoop) {}

  void deliver(Block block) EXCLUDES(mutex) {
    // Under the lock, so that the loop stays as long as it is used; it only queues the block.
    MutexLock lock(mutex);
    if (loop != nullptr) loop->post(std::move(block));
  }
  void close() EXCLUDES(mutex) {
    MutexLock lock(mutex);
    loop = nullptr;
  }

 private:
  Mutex mutex;
  EventLoop* loop GUARDED_BY(mutex);
};

CardWatch::CardWatch(Session& commandSession, EventLoop& eventLoop, WatchReport& watchReport)
    : session(commandSession), report(watchReport), mailbox(std::make_shared<Mailbox>(eventLoop)) {}

CardWatch::~CardWatch() { mailbox->close(); }

void CardWatch::lookAgain() {
  if (std::exchange(isFetching, true)) {
    isOutdated = true;
    return;
  }
  session.agent.fetchDonatedMeCard(
      [this, box = mailbox](const ContactPtr& card, const ErrorPtr& error) {
        box->deliver([this, card, error] { receive(card, error); });
      });
}

void CardWatch::lookAfterNotification() {
  wasNotified = true;
  lookAgain();
}

void CardWatch::receive(const ContactPtr& card, const ErrorPtr& error) {
  isFetching = false;
  if (!std::exchange(hasBegun, true)) {
    begin(error);
  } else if (error) {
    note(error);
  } else if (lastCard) {
    const CardChanges changes = CardChanges::between(*lastCard, *card);
    if (wasNotified || !changes.empty()) report.changed(Date::now(), changes);
  }
  wasNotified = false;
  lastRefusal = error;
  if (card) lastCard = card;
  if (std::exchange(isOutdated, false)) lookAgain();
}

void CardWatch::begin(const ErrorPtr& error) {
  if (error) static_cast<void>(session.failWith(error));
  report.began(!error || !isNoAnswer(*error));
}

void CardWatch::note(const ErrorPtr& error) {
  // That an agent is gone is noticed elsewhere, sooner.
  if (isNoAgent(*error) || (lastRefusal && *lastRefusal == *error)) return;
  report.refused(Date::now(), *error);
}

}  // namespace quenlet
