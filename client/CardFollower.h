#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "client/HandlerSlot.h"
#include "platform/contacts/Contact.h"
#include "platform/ipc/ClientLoop.h"
#include "platform/notifications/NotificationReceiver.h"
#include "protocol/CorvelProtocol.h"
#include "quenlet/Card.h"
#include "quenlet/Result.h"

namespace quenlet {

// Fetches the donated me card whenever the agent says that it may have changed, and tells when it
// has become another one, or cannot be had for another reason. Lives on the loop; cancel() may be
// called on any thread.
class CardFollower final : public std::enable_shared_from_this<CardFollower> {
 public:
  using Handler = std::function<void(Result<Card> card)>;

  // `agent` replies on the loop. `handler` is called there with the card as it is, then with each
  // other one. An error when notifications cannot be received.
  [[nodiscard]] static Result<std::shared_ptr<CardFollower>> start(
      const std::shared_ptr<ClientLoop>& loop, std::shared_ptr<CorvelProtocol> agent,
      const std::filesystem::path& notifications, Handler handler);
  CardFollower(const CardFollower&) = delete;
  CardFollower& operator=(const CardFollower&) = delete;

  // The handler is not called any more, unless it is being called.
  void cancel();
  [[nodiscard]] bool isCancelled() const { return !slot.isWanted(); }

 private:
  CardFollower(std::shared_ptr<CorvelProtocol> asked, Handler handler);
  void lookAgain();
  void receive(Result<Card> card);

  const std::shared_ptr<CorvelProtocol> agent;
  HandlerSlot<Result<Card>> slot;
  std::shared_ptr<NotificationReceiver> receiver;
  bool isFetching = false;
  bool isOutdated = false;
  std::optional<Result<Card>> last;
};

}  // namespace quenlet
