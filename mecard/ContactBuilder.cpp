#include "mecard/ContactBuilder.h"

#include "mecard/DonationVisitor.h"

namespace quenlet {

Contact ContactBuilder::build() const {
  DonationVisitor visitor(donations.size());
  for (const DonationValuePtr& donation : donations) {
    donation->acceptDonationValueVisitor(visitor);
  }
  return std::move(visitor).takeContact();
}

}  // namespace quenlet
