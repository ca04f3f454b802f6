#pragma once

#include <variant>

#include "model/ComparisonKeys.h"

namespace quenlet {

// What a pass over the donations has learned about the owner's name. A value type. Names are held
// as the keys by which they are equivalent, so two statuses are equal when they are the same case
// with equivalent names.
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
    NameKey name;
    friend bool operator==(const Curated&, const Curated&) = default;
  };
  // All donated names so far are equivalent to this one.
  struct OneDonation final {
    NameKey name;
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

  NameSuppressionStatus(Cases status) : cases(std::move(status)) {}

  template <typename Case>
  [[nodiscard]] const Case* as() const {
    return std::get_if<Case>(&cases);
  }

  friend bool operator==(const NameSuppressionStatus&, const NameSuppressionStatus&) = default;

 private:
  Cases cases;
};

}  // namespace quenlet
