#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "model/DonationValue.h"
#include "tools/owner/DonationStates.h"

namespace quenlet {

// Whether a short number of a list still means what it meant when it was last shown: numbers are
// places, and a donation that goes moves all behind it. For this, a file in the runtime directory,
// which is the user's alone, holds a digest of the item at each place. A reader of a digest can
// test guesses of the item. One thread.
//
//   shown: a b c   the file: a b c     1, 2 and 3 hold
//   b goes         the file: a b c     2 would be c now: only 1 holds
//   shown: c alone the file: a c       2 holds again
class ShownNumbers final {
 public:
  // Below the runtime directory.
  static constexpr char donationsPath[] = "quenlet/shown-donations";
  static constexpr char rejectionsPath[] = "quenlet/shown-rejections";

  // Those of the agent's donations, and of the rejections.
  [[nodiscard]] static ShownNumbers ofDonations() { return ShownNumbers(donationsPath); }
  [[nodiscard]] static ShownNumbers ofRejections() { return ShownNumbers(rejectionsPath); }

  // Notes that these donations of the agent's list are shown now.
  static void rememberDonations(const StatedDonations& list, const StatedDonations& shown);

  // Notes that the items at these places of the whole list are shown now, by their numbers. If that
  // fails, numbers will not hold.
  void remember(const std::vector<std::string>& items,
                const std::vector<std::size_t>& shownPlaces) const;
  // Whether the item at that place is the one that was last shown there.
  [[nodiscard]] bool hold(const std::vector<std::string>& items, std::size_t place) const;

  // What counts of each donation: its identifier and its content, but neither dates nor origin.
  [[nodiscard]] static std::vector<std::string> itemsOf(const DonationValues& donations);

 private:
  explicit ShownNumbers(const char* path);
  [[nodiscard]] std::string digests() const;

  std::optional<std::filesystem::path> file;  // nothing without a runtime directory
};

}  // namespace quenlet
