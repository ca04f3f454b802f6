#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quenlet/Donation.h"

namespace quenlet {

// Donations of one cluster, which the owner can reject together, for 30 days from now. Identifiers
// hold a pseudonym of the cluster's key, as the key may be personal. One thread.
class DonationCluster final {
 public:
  static constexpr int days = 30;

  // `key` stays the same while the source keeps the thing, and is unique among its own.
  DonationCluster(std::string bundleIdentifier, std::string_view key);

  // `kind` tells the values of a cluster apart; nothing personal.
  template <typename Content>
  void add(Content content, const std::string& kind) {
    Donation donation = made(kind);
    donation.content = std::move(content);
    donations.push_back(std::move(donation));
  }
  [[nodiscard]] bool isEmpty() const { return donations.empty(); }
  void moveTo(std::vector<Donation>& all);

 private:
  [[nodiscard]] Donation made(const std::string& kind) const;

  const std::string bundle;
  const std::string cluster;
  const Date now = Date::now();
  std::vector<Donation> donations;
};

}  // namespace quenlet
