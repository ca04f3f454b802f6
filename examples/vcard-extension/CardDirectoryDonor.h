#pragma once

#include <filesystem>
#include <functional>

#include "client/ExtensionDonor.h"

namespace quenlet {

// Donates the vCards (*.vcf) of a directory for 30 days, and renews what a card there still says
// for 30 more. What no card says any more is taken back. A file that is no readable card is passed
// over; while there is one, nothing is taken back, as the value may stand in it. One thread.
class CardDirectoryDonor final : public ExtensionDonor {
 public:
  static constexpr char bundleIdentifier[] = "org.quenlet.vcard-extension";
  static constexpr double lifetimeSeconds = 30 * 86400.0;

  // A directory that does not exist holds no cards.
  explicit CardDirectoryDonor(std::filesystem::path cardDirectory,
                              std::function<Date()> clock = &Date::now);

  Result<Date> renewExpirationDate(const DonationValue& value) override;
  Result<DonationValues> allValues(std::uint64_t reason) override;

 private:
  struct Cards final {
    DonationValues values;
    bool areAll = true;
  };
  [[nodiscard]] Result<Cards> readCards() const;

  const std::filesystem::path directory;
  const std::function<Date()> now;
};

}  // namespace quenlet
