#pragma once

#include "modems/ModemDaemonProtocol.h"

namespace quenlet {

// ModemManager, the daemon of most Linux desktops and phones. A modem's place is its device, which
// stays when the modem gets another object after a suspend.
class ModemManagerDaemon final : public ModemDaemonProtocol {
 public:
  [[nodiscard]] std::string name() const override;
  [[nodiscard]] std::vector<BusSignalMatch> signals() const override;
  [[nodiscard]] bool isNews(const BusSignal& signal) const override;
  [[nodiscard]] BusCall listCall() const override;
  [[nodiscard]] std::optional<std::vector<ListedModem>> listed(
      const BusValues& answer) const override;
  [[nodiscard]] Modem withCard(Modem modem, const BusValues& answer) const override;
};

}  // namespace quenlet
