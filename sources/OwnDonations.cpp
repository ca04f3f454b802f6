#include "sources/OwnDonations.h"

#include "model/DonationBounds.h"
#include "model/DonationError.h"
#include "platform/foundation/ProblemReporter.h"

namespace quenlet {
namespace {

// Why a value cannot be stored; null if it can.
ErrorPtr problemOf(const DonationValue& value) {
  const auto leftOut = [](const std::string& reason) {
    return makeDonationError(DonationErrorCode::notSerializable,
                             "left out, since it cannot be serialised" + reason);
  };
  if (const auto violation = DonationBounds::violation(value.propertyListRepresentation())) {
    return leftOut(": " + *violation);
  }
  return value.propertyListText() ? nullptr : leftOut("");
}

}  // namespace

DonationValues OwnDonations::storable(DonationValues values) {
  std::erase_if(values, [](const DonationValuePtr& value) {
    const ErrorPtr problem = problemOf(*value);
    if (!problem) return false;
    ProblemReporter("donation " + value->decoded().origin.donationIdentifier).setProblem(problem);
    return true;
  });
  return values;
}

}  // namespace quenlet
