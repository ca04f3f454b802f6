#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "client/ExtensionDonor.h"

namespace quenlet {

// Donates the vCards (*.vcf) of a directory for 30 days, and renews what a card there still says
// for 30 more. What no card says any more is taken back. A file that is no readable card is passed
// over; while there is one, nothing is taken back, as the value may stand in it. Renewals go by the
// cards as they were at the first of them, or at a re-donation since: a run of the program is
// short. One thread.
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
    // By donation identifier.
    std::multimap<std::string, DonationValuePtr> byIdentifier;
    bool areAll = true;
  };
  // Reads the cards into `known`; the error when the directory cannot be listed.
  [[nodiscard]] ErrorPtr readCards();

  const std::filesystem::path directory;
  const std::function<Date()> now;
  std::optional<Cards> known;
};

}  // namespace quenlet
