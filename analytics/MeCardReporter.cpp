#include "analytics/MeCardReporter.h"

#include "analytics/AnalyticsReporting.h"

namespace quenlet {

void MeCardReporter::report(MeCardFields fields) const {
  AnalyticsReporting& reporter = *AnalyticsReporting::standardReporter();
  reporter.reportNumberOfMeCards(1);
  reporter.reportHasNameComponents(
      fields.contains(MeCardFields::nameComponents), fields.contains(MeCardFields::emailAddresses),
      fields.contains(MeCardFields::phoneNumbers), fields.contains(MeCardFields::postalAddresses));
}

}  // namespace quenlet
