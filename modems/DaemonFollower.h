#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "bus/BusConnection.h"
#include "modems/ModemDaemonProtocol.h"
#include "platform/foundation/ProblemReporter.h"

namespace quenlet {

// Follows the modems of one daemon: reads them anew whenever the daemon comes, or has news, one
// reading after the other. Never starts the daemon. A list or a card that cannot be read is
// reported on standard error, by the name of the error alone, and read again half a minute later,
// then after twice as long each time, up to `mostRetrySeconds`. Use on the loop's thread only; the
// connection outlives it.
class DaemonFollower final {
 public:
  // All modems that the daemon has; none without a daemon.
  using Handler = std::function<void(const std::vector<Modem>& modems)>;

  // As BusLoop::after.
  using After = std::function<std::shared_ptr<Cancelable>(double delaySeconds, Block block)>;

  static constexpr double firstRetrySeconds = 30;
  static constexpr double mostRetrySeconds = 480;

  DaemonFollower(After after, BusConnection& bus, std::unique_ptr<ModemDaemonProtocol> daemon,
                 Handler handler);
  ~DaemonFollower();
  DaemonFollower(const DaemonFollower&) = delete;
  DaemonFollower& operator=(const DaemonFollower&) = delete;

 private:
  void follow(const std::string& owner);
  void read();
  void takeList(const Result<BusValues>& answer);
  void takeCard(std::size_t place, const Result<BusValues>& answer);
  void fail(const ErrorPtr& error);
  void finish();
  void readLater();
  void cancelCalls();

  const After after;
  BusConnection& bus;
  const std::unique_ptr<ModemDaemonProtocol> daemon;
  const Handler handler;
  ProblemReporter problems;
  std::vector<std::shared_ptr<Cancelable>> watches;
  std::shared_ptr<Cancelable> nextTry;
  // The reading under way: its calls, the modems so far, how many cards are awaited.
  std::vector<std::shared_ptr<Cancelable>> calls;
  std::vector<Modem> modems;
  std::size_t awaitedCards = 0;
  ErrorPtr cardProblem;
  double retrySeconds = firstRetrySeconds;
  bool isReading = false;
  bool hasNews = false;
};

}  // namespace quenlet
