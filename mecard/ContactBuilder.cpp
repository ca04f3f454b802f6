#include "mecard/ContactBuilder.h"

#include <numeric>

#include "mecard/DonationVisitor.h"

namespace quenlet {

Contact ContactBuilder::build() const {
  std::vector<std::uint32_t> places(donations.size());
  std::iota(places.begin(), places.end(), 0);
  return build(std::make_shared<const DonationValues>(donations), places);
}

Contact ContactBuilder::build(const std::shared_ptr<const DonationValues>& donations,
                              const std::vector<std::uint32_t>& places, CardReasons* reasons) {
  DonationVisitor visitor(donations, places.size(), reasons);
  for (const std::uint32_t place : places) {
    prefetchDonation(*donations, place);
    (*donations)[place]->acceptDonationValueVisitor(visitor);
  }
  return std::move(visitor).takeContact();
}

}  // namespace quenlet
