#pragma once

#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "quenlet/Extension.h"

namespace quenlet {

// Donates what a source has, and renews for 30 more days each value that it still has. Takes back
// those that it has no more, but nothing while the source cannot be read. Renewals go by the source
// as read at the first one or at a re-donation since: a run of an extension is short. One thread.
class SourceDonor final : public Extension {
 public:
  using Donations = Result<std::vector<Donation>>;
  using Source = std::function<Donations()>;

  explicit SourceDonor(Source donationSource) : source(std::move(donationSource)) {}

  [[nodiscard]] Result<Date> renew(const Donation& donation) override;
  [[nodiscard]] Donations allDonations(std::uint64_t reason) override;

 private:
  [[nodiscard]] ErrorPtr readSource();

  const Source source;
  std::optional<std::vector<Donation>> known;
};

}  // namespace quenlet
