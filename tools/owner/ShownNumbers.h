#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "model/DonationValue.h"

namespace quenlet {

// Whether the short numbers of a list still mean what they meant when it was last shown: they are
// places, and a donation that goes moves all behind it. For this, a digest of the list that was
// shown lies in the runtime directory; it reveals no value. One thread.
class ShownNumbers final {
 public:
  // Those of the agent's donations, and of the rejections.
  [[nodiscard]] static ShownNumbers ofDonations() { return ShownNumbers("shown-donations"); }
  [[nodiscard]] static ShownNumbers ofRejections() { return ShownNumbers("shown-rejections"); }

  // Notes that a list with these items is shown now. If that fails, numbers will not hold.
  void remember(const std::vector<std::string>& items) const;
  // Whether the list that was last shown had these items.
  [[nodiscard]] bool hold(const std::vector<std::string>& items) const;

  // What counts of each donation: its identifier and its content, but neither dates nor origin.
  [[nodiscard]] static std::vector<std::string> itemsOf(const DonationValues& donations);

 private:
  explicit ShownNumbers(const char* fileName);

  std::optional<std::filesystem::path> file;  // nothing without a runtime directory
};

}  // namespace quenlet
