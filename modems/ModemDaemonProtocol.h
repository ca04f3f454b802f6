#pragma once

#include <optional>
#include <string>
#include <vector>

#include "bus/BusConnection.h"
#include "modems/ModemCards.h"

namespace quenlet {

// A modem in a daemon's answer. A value type.
struct ListedModem final {
  Modem modem;
  // What to ask for the rest; none when there is nothing to ask.
  std::optional<BusCall> cardCall;
};

// What is particular to one daemon that drives modems: what to ask it, which of its signals matter,
// what its answers mean. Answers may hold anything. Immutable; asks nobody itself.
class ModemDaemonProtocol {
 public:
  virtual ~ModemDaemonProtocol() = default;
  // On the bus.
  [[nodiscard]] virtual std::string name() const = 0;
  [[nodiscard]] virtual std::vector<BusSignalMatch> signals() const = 0;
  // Whether modems or cards may have changed; false for what changes all the time, such as the
  // strength of a signal.
  [[nodiscard]] virtual bool isNews(const BusSignal& signal) const = 0;
  [[nodiscard]] virtual BusCall listCall() const = 0;
  // Nothing when the answer makes no sense.
  [[nodiscard]] virtual std::optional<std::vector<ListedModem>> listed(
      const BusValues& answer) const = 0;
  // `modem` with what the answer to its card call says. Without that, its card stays unknown.
  [[nodiscard]] virtual Modem withCard(Modem modem, const BusValues& answer) const = 0;
};

}  // namespace quenlet
