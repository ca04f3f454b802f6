#pragma once

#include <optional>
#include <unordered_map>
#include <variant>

#include "mecard/CardReasons.h"
#include "model/DonationValue.h"
#include "platform/foundation/KeyedHash.h"

namespace quenlet {

// What a pass over the donations has learned about the owner's name. A value type. Names are held
// as the keys of equivalent names, so two statuses are equal when they are the same
// case with equivalent names.
//
//   state              | a donated name that is equivalent | any other donated name
//   none               | oneDonation, with that name       | –
//   oneDonation        | oneDonation, with the first name  | differentDonations
//   differentDonations | differentDonations                | differentDonations
//   curated            | curated                           | curated; the donor is silenced
class NameSuppressionStatus final {
 public:
  // The owner curates a name; donated names must match it.
  struct Curated final {
    Fingerprint name;
    friend bool operator==(const Curated&, const Curated&) = default;
  };
  // All donated names so far are equivalent to this one.
  struct OneDonation final {
    Fingerprint name;
    friend bool operator==(const OneDonation&, const OneDonation&) = default;
  };
  struct None final {
    friend bool operator==(None, None) = default;
  };
  // At least two donated names disagree.
  struct DifferentDonations final {
    friend bool operator==(DifferentDonations, DifferentDonations) = default;
  };
  using Cases = std::variant<Curated, OneDonation, None, DifferentDonations>;

  NameSuppressionStatus(Cases status) : cases(status) {}

  template <typename Case>
  [[nodiscard]] const Case* as() const {
    return std::get_if<Case>(&cases);
  }

  friend bool operator==(const NameSuppressionStatus&, const NameSuppressionStatus&) = default;

 private:
  Cases cases;
};

// Decides which donors are silenced, and whether donated names may be used at all. Collect every
// donation first, in the order of the list, then ask keeps() for each. The donations outlive it. A
// value type; one thread at a time.
//
// A donor whose name contradicts the curated one talks about somebody else: everything from the
// same cluster, or from the same app if the donation has no cluster, is left out.
class CollectedSuppressionResult final {
 public:
  // Keys of donors, each with the first donation whose name silenced it.
  using Donors = std::unordered_map<Fingerprint, const DonationValue*, FingerprintHash>;

  explicit CollectedSuppressionResult(const std::optional<PersonNameComponents>& curatedName);

  void collect(const DonationValue& donation);
  [[nodiscard]] bool keeps(const DonationValue& donation) const {
    return decide(donation) == CardDecision::shown;
  }
  // shown when the donation is kept, else why it is not.
  [[nodiscard]] CardDecision decide(const DonationValue& donation) const;
  // The decision with the name that it rests on.
  [[nodiscard]] CardReason explain(const DonationValue& donation) const;

  [[nodiscard]] const NameSuppressionStatus& nameStatus() const { return status; }
  [[nodiscard]] const Donors& suppressedBundleIDs() const { return bundleIDs; }
  [[nodiscard]] const Donors& suppressedClusterIDs() const { return clusterIDs; }

 private:
  void suppressDonor(const DonationValue& donation);

  NameSuppressionStatus status;
  Donors bundleIDs;
  Donors clusterIDs;
  // The first donated name, and the first that is not equivalent to it, while none is curated.
  const DonationValue* firstName = nullptr;
  const DonationValue* dissentingName = nullptr;
};

}  // namespace quenlet
