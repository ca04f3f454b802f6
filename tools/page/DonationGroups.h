#pragma once

#include <set>
#include <string>
#include <vector>

#include "tools/page/PageContent.h"

// The page's donations, grouped as its sections show them. Pure functions; what they give is valid
// as long as the content.
namespace quenlet {

// What is left out for one reason.
struct ReasonGroup final {
  DonationState state;
  SomeDonations donations;
};
// In the order of the states; none is empty.
[[nodiscard]] std::vector<ReasonGroup> leftOutByReason(const PageContent& content);

// What expires in one calendar month (UTC).
struct ExpiryMonth final {
  std::string month;  // "2026-11"; empty for what never expires
  SomeDonations donations;
};
// Ascending, "never" last; none is empty.
[[nodiscard]] std::vector<ExpiryMonth> expiryByMonth(const PageContent& content);

struct Donor final {
  std::string bundleIdentifier;
  std::set<std::string> clusters;
  std::size_t shown = 0;
  std::size_t leftOut = 0;
  Date lastDonation;
  Date nextExpiration;
};
// In alphabetical order.
[[nodiscard]] std::vector<Donor> donorsOf(const PageContent& content);

}  // namespace quenlet
