#include "analytics/LogAnalyticsReporter.h"

#include "analytics/DescriptionBuilder.h"
#include "platform/PlatformServices.h"

namespace quenlet {
namespace {

std::string lineOfField(bool has, const std::string& field) {
  return "The me card " + std::string(has ? "has " : "does not have ") + field;
}

// `kind` is padded with blanks, so that the colons of all kinds line up.
std::string lineOfCounts(const std::string& kind, std::uint64_t matched, std::uint64_t unmatched) {
  return "Number of donated " + kind + ": " + std::to_string(matched + unmatched) + " (" +
         std::to_string(matched) + " matched, " + std::to_string(unmatched) + " unmatched)";
}

}  // namespace

LogAnalyticsReporter::LogAnalyticsReporter()
    : log_t(PlatformServices::current().makeSystemLog("ovaro.quenlet", "analytics")) {}

void LogAnalyticsReporter::writeLines(std::initializer_list<std::string> lines) const {
  for (const std::string& line : lines) {
    if (log_t->isDefaultLevelEnabled()) log_t->write(line);
  }
}

void LogAnalyticsReporter::reportNumberOfMeCards(std::uint64_t count) {
  writeLines({"User has " + std::to_string(count) + " me cards"});
}

void LogAnalyticsReporter::reportHasNameComponents(bool hasNameComponents, bool hasEmailAddress,
                                                   bool hasPhoneNumber, bool hasPostalAddress) {
  writeLines({lineOfField(hasNameComponents, "name components"),
              lineOfField(hasEmailAddress, "email addresses"),
              lineOfField(hasPhoneNumber, "phone numbers"),
              lineOfField(hasPostalAddress, "postal addresses")});
}

void LogAnalyticsReporter::reportAugmentationStatus(const AugmentationStatus& status) {
  writeLines({lineOfCounts("email addresses ", status.matchedEmailAddressCount(),
                           status.unmatchedEmailAddressCount()),
              lineOfCounts("phone numbers   ", status.matchedPhoneNumberCount(),
                           status.unmatchedPhoneNumberCount()),
              lineOfCounts("postal addresses", status.matchedPostalAddressCount(),
                           status.unmatchedPostalAddressCount())});
}

std::string LogAnalyticsReporter::description() const {
  return DescriptionBuilder("LogAnalyticsReporter").build();
}

}  // namespace quenlet
