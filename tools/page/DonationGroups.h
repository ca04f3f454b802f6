#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/page/PageContent.h"

// The page's values, grouped as its sections show them. Pure functions; what they give is valid
// as long as the content.
namespace quenlet {

// A value that is not on the card, on the agent's list or not.
struct LeftOutValue final {
  // The donation's number on the list; 0 if it is not there.
  std::size_t number;
  // Null for an entry of a file that its reader could not use.
  const Value* value;
  std::string_view bundleIdentifier;
  std::string_view because;
};

// The values that are left out for one reason.
struct ReasonGroup final {
  DonationState state;
  std::vector<LeftOutValue> values;
};
// In the order of the states; none is empty.
[[nodiscard]] std::vector<ReasonGroup> leftOutByReason(const PageContent& content);

// The donations that expire in one calendar month (UTC).
struct ExpiryMonth final {
  std::string month;  // "2026-11"; empty for what never expires
  SomeDonations donations;
};
// Ascending, "never" last; none is empty.
[[nodiscard]] std::vector<ExpiryMonth> expiryByMonth(const PageContent& content);

}  // namespace quenlet
