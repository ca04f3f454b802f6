#include "platform/donations/OwnDonations.h"

#include "platform/donations/DonationError.h"
#include "platform/foundation/ProblemReporter.h"

namespace quenlet {

DonationValues OwnDonations::storable(DonationValues values) {
  std::erase_if(values, [](const DonationValuePtr& value) {
    if (value->propertyListText()) return false;
    ProblemReporter("donation " + value->origin().donationIdentifier)
        .setProblem(makeDonationError(DonationErrorCode::notSerializable,
                                      "left out, since it cannot be serialised"));
    return true;
  });
  return values;
}

}  // namespace quenlet
