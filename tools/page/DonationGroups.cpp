#include "tools/page/DonationGroups.h"

#include <map>
#include <utility>

#include "tools/presentation/ValueText.h"

namespace quenlet {

std::vector<ReasonGroup> leftOutByReason(const PageContent& content) {
  std::map<DonationState, std::vector<LeftOutValue>> byState;
  for (const auto& [stated, value, origin] : content.donations) {
    if (stated.isShown()) continue;
    byState[stated.state].push_back(
        {stated.number, &value, origin.bundleIdentifier, stated.because});
  }
  for (const UnlistedValue& missing : content.missing) {
    byState[missing.state].push_back(
        {0, missing.value ? &*missing.value : nullptr, missing.bundleIdentifier, missing.because});
  }
  std::vector<ReasonGroup> groups;
  groups.reserve(byState.size());
  for (auto& [state, values] : byState) groups.push_back({state, std::move(values)});
  return groups;
}

std::vector<ExpiryMonth> expiryByMonth(const PageContent& content) {
  std::map<std::string, SomeDonations> byMonth;
  SomeDonations lasting;
  for (const PageDonation& donation : content.donations) {
    const Date expires = donation.origin.expirationDate;
    const std::string month = dayOf(expires).substr(0, std::string_view("2026-11").size());
    (expires < Date::distantFuture() ? byMonth[month] : lasting).push_back(&donation);
  }
  std::vector<ExpiryMonth> months;
  months.reserve(byMonth.size() + 1);
  for (auto& [month, donations] : byMonth) months.push_back({month, std::move(donations)});
  if (!lasting.empty()) months.push_back({"", std::move(lasting)});
  return months;
}

}  // namespace quenlet
