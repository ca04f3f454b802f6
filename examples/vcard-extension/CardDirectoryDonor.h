#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "client/ExtensionDonor.h"

namespace quenlet {

// Donates the vCards (*.vcf) of a directory for 30 days, and renews for 30 more each value that a
// card there still has. Takes back values that no card has any more; but nothing while some file
// cannot be read as cards, since that file may hold the value. Renewals go by the cards as read at
// the first one or at a re-donation since: a run of the program is short. One thread.
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
