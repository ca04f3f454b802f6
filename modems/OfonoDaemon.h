#pragma once

#include "modems/ModemDaemonProtocol.h"

namespace quenlet {

// oFono, the daemon of phones that came from other systems. A modem's place is its object, which is
// named after its device.
class OfonoDaemon final : public ModemDaemonProtocol {
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
