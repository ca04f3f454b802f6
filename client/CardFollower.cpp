#include "client/CardFollower.h"

#include <utility>

#include "client/Conversion.h"
#include "platform/notifications/DistributedNotificationCenter.h"

namespace quenlet {
namespace {

bool areSame(const Result<Card>& left, const Result<Card>& right) {
  if (left.ok() != right.ok()) return false;
  return left.ok() ? left.value() == right.value() : *left.error() == *right.error();
}

}  // namespace

Result<std::shared_ptr<CardFollower>> CardFollower::start(
    const std::shared_ptr<ClientLoop>& loop, std::shared_ptr<CorvelProtocol> agent,
    const std::filesystem::path& notifications, Handler handler) {
  using Started = Result<std::shared_ptr<CardFollower>>;
  const std::shared_ptr<CardFollower> follower(
      new CardFollower(std::move(agent), std::move(handler)));
  auto opened = NotificationReceiver::open(
      loop->events, notifications, [weak = follower->weak_from_this()](const std::string& name) {
        const auto self = weak.lock();
        if (self && name == MeCardValuesDidChangeNotification) self->lookAgain();
      });
  if (!opened.ok()) return Started::failure(opened.error());
  follower->receiver = std::move(opened).takeValue();
  loop->events.post([follower] { follower->lookAgain(); });
  return Started::success(follower);
}

CardFollower::CardFollower(std::shared_ptr<CorvelProtocol> asked, Handler handler)
    : agent(std::move(asked)), slot(std::move(handler)) {}

void CardFollower::cancel() {
  slot.cancel();
  receiver->close();
}

void CardFollower::lookAgain() {
  if (isCancelled()) return;
  if (std::exchange(isFetching, true)) {
    isOutdated = true;
    return;
  }
  agent->fetchDonatedMeCard(
      [weak = weak_from_this()](const ContactPtr& contact, const ErrorPtr& error) {
        const auto self = weak.lock();
        if (!self) return;
        self->receive(contact ? Result<Card>::success(Conversion::card(*contact))
                              : Result<Card>::failure(error));
      });
}

void CardFollower::receive(Result<Card> card) {
  isFetching = false;
  if (!last || !areSame(*last, card)) {
    last = std::move(card);
    slot.deliver(*last);
  }
  if (std::exchange(isOutdated, false)) lookAgain();
}

}  // namespace quenlet
