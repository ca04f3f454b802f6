#include "mecard/ContactBuilder.h"

#include <memory>

#include "mecard/DonationVisitor.h"

namespace quenlet {

Contact ContactBuilder::build() const {
  DonationVisitor visitor(std::make_shared<const DonationValues>(donations), donations.size());
  for (const DonationValuePtr& donation : donations) donation->acceptDonationValueVisitor(visitor);
  return std::move(visitor).takeContact();
}

}  // namespace quenlet
