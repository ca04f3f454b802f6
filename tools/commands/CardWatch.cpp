#include "tools/commands/CardWatch.h"

#include <utility>

namespace quenlet {

void CardWatch::lookAgain() {
  if (std::exchange(isFetching, true)) {
    isOutdated = true;
    return;
  }
  asked.fetchDonatedMeCard(
      [this](const ContactPtr& card, const ErrorPtr& error) { receive(card, error); });
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
