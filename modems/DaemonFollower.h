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
// reading after the other. Never starts the daemon. A reading that fails is reported on standard
// error without what the daemon said, and done again half a minute later. Use on the loop's thread
// only; the loop and the connection outlive it.
class DaemonFollower final {
 public:
  // All modems that the daemon has; none without a daemon.
  using Handler = std::function<void(const std::vector<Modem>& modems)>;

  DaemonFollower(BusLoop& loop, BusConnection& bus, std::unique_ptr<ModemDaemonProtocol> daemon,
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

  BusLoop& loop;
  BusConnection& bus;
  const std::unique_ptr<ModemDaemonProtocol> daemon;
  const Handler handler;
  ProblemReporter problems;
  std::vector<std::shared_ptr<Cancelable>> watches;
  std::shared_ptr<Cancelable> nextTry;
  // Of the reading under way: its calls, the modems so far, how many cards are awaited.
  std::vector<std::shared_ptr<Cancelable>> calls;
  std::vector<Modem> modems;
  std::size_t awaitedCards = 0;
  bool isIncomplete = false;
  bool isReading = false;
  bool hasNews = false;
};

}  // namespace quenlet
