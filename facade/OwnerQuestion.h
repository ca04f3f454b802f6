#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/AppPermission.h"
#include "bus/BusConnection.h"
#include "facade/DialogBackend.h"

namespace quenlet {

// What an app wants of the owner. A value type.
struct AppRequest final {
  AppWish wish = AppWish::meCard;
  std::string app = {};
  // The connection that asks, by its unique name.
  std::string sender = {};
  // For the card: what the app would like. The owner chooses among all kinds.
  CardKinds kinds = {};
  // The app's window, as portals name it, for the dialog to stand before; may be empty.
  std::string parentWindow = {};
};

// Asks the owner with the desktop's own dialog. Programs that show it and run are tried first, this
// desktop's before others; only when none runs, this desktop's own is started. A dialog that nobody
// waits for any more is closed. A program that answers with an error, or ends with its dialog, has
// not asked: the next one is tried. Use on the loop's thread; the connection must outlive what was
// begun.
class OwnerQuestion final {
 public:
  // What the owner said; nothing when the dialog was closed without an answer, or stood for the
  // time of `patience`. An error when there is nobody who could ask.
  using Answer = std::function<void(Result<std::optional<AppPermission>> answer)>;
  using Backends = std::function<std::vector<DialogBackend>()>;

  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  static constexpr std::chrono::minutes patience{10};

  OwnerQuestion(BusConnection& connection, Backends find,
                Clock clock = std::chrono::steady_clock::now)
      : bus(connection), findBackends(std::move(find)), now(std::move(clock)) {}

  // Cancelling the token closes the dialog; then there is no answer.
  [[nodiscard]] std::shared_ptr<Cancelable> ask(const AppRequest& request, Answer answer);

 private:
  class Attempt;
  void tryNext(const std::shared_ptr<Attempt>& attempt);
  void hear(const std::shared_ptr<Attempt>& attempt, const Result<BusValues>& reply);
  [[nodiscard]] std::string nextHandle();

  BusConnection& bus;
  const Backends findBackends;
  const Clock now;
  std::uint64_t lastQuestion = 0;
};

}  // namespace quenlet
