#include "platform/logging/StructuredAgentLogger.h"

namespace quenlet {

void StructuredAgentLogger::agentWillStart() { log.record("agentWillStart"); }
void StructuredAgentLogger::agentDidStart() { log.record("agentDidStart"); }
void StructuredAgentLogger::agentWillStop() { log.record("agentWillStop"); }
void StructuredAgentLogger::donationServiceWillStart() { log.record("donationServiceWillStart"); }
void StructuredAgentLogger::donationServiceDidStart() { log.record("donationServiceDidStart"); }
void StructuredAgentLogger::donationServiceWillStop() { log.record("donationServiceWillStop"); }
void StructuredAgentLogger::maintenanceServiceWillStart() {
  log.record("maintenanceServiceWillStart");
}
void StructuredAgentLogger::maintenanceServiceDidStart() {
  log.record("maintenanceServiceDidStart");
}
void StructuredAgentLogger::maintenanceServiceWillStop() {
  log.record("maintenanceServiceWillStop");
}
void StructuredAgentLogger::beginRestorePersistedState() {
  log.record("beginRestorePersistedState");
}
void StructuredAgentLogger::endRestorePersistedState() { log.record("endRestorePersistedState"); }
void StructuredAgentLogger::acceptingConnectionFromProcess(pid_t processIdentifier) {
  log.record("acceptingConnectionFromProcess:", {std::int64_t{processIdentifier}});
}
void StructuredAgentLogger::denyingRequestFromProcess(pid_t processIdentifier) {
  log.record("denyingRequestFromProcess:", {std::int64_t{processIdentifier}});
}
void StructuredAgentLogger::deniedProcess(pid_t processIdentifier, const std::string& executable) {
  log.record("deniedProcess:executable:", {std::int64_t{processIdentifier}, executable});
}
void StructuredAgentLogger::acceptingDonations(const DonationValues& values) {
  log.record("acceptingDonations:", {std::cref(values)});
}
void StructuredAgentLogger::preExpiredDonations(const DonationValues& values) {
  log.record("preExpiredDonations:", {std::cref(values)});
}
void StructuredAgentLogger::agentWillHandleRequest(const std::string& requestName) {
  log.record("agentWillHandleRequest:", {requestName});
}
void StructuredAgentLogger::agentDidHandleRequest(const std::string& requestName) {
  log.record("agentDidHandleRequest:", {requestName});
}
void StructuredAgentLogger::featureNotEnabled(const std::string& requestName) {
  log.record("featureNotEnabled:", {requestName});
}
void StructuredAgentLogger::featureWillDisable() { log.record("featureWillDisable"); }
void StructuredAgentLogger::featureWillEnable() { log.record("featureWillEnable"); }
void StructuredAgentLogger::featureDidDisable() { log.record("featureDidDisable"); }
void StructuredAgentLogger::featureDidEnable() { log.record("featureDidEnable"); }
void StructuredAgentLogger::contactsChangedNotificationFoundName(bool found, bool nameChanged) {
  log.record("contactsChangedNotificationFoundName:nameChanged:", {found, nameChanged});
}
void StructuredAgentLogger::contactsChangedNotificationEmailAddressesChanged(bool changed) {
  log.record("contactsChangedNotificationEmailAddressesChanged:", {changed});
}
void StructuredAgentLogger::willDiscoverExtensions() { log.record("willDiscoverExtensions"); }
void StructuredAgentLogger::didDiscoverExtension(const std::string& extension) {
  log.record("didDiscoverExtension:", {extension});
}
void StructuredAgentLogger::didDiscoverUnexpectedExtensionType(const std::string& object) {
  log.record("didDiscoverUnexpectedExtensionType:", {object});
}
void StructuredAgentLogger::didDiscoverExtensions() { log.record("didDiscoverExtensions"); }
void StructuredAgentLogger::didFailToDiscoverExtensions(const ErrorPtr& error) {
  log.record("didFailToDiscoverExtensions:", {error});
}
void StructuredAgentLogger::willLoadExtensionVersions() { log.record("willLoadExtensionVersions"); }
void StructuredAgentLogger::willSaveExtensionVersions() { log.record("willSaveExtensionVersions"); }
void StructuredAgentLogger::willRejectDonationIdentifier(const std::string& identifier) {
  log.record("willRejectDonationIdentifier:", {identifier});
}
void StructuredAgentLogger::didRejectDonationIdentifier(const std::string& identifier) {
  log.record("didRejectDonationIdentifier:", {identifier});
}
void StructuredAgentLogger::couldNotRejectUnknownDonationIdentifier(const std::string& identifier) {
  log.record("couldNotRejectUnknownDonationIdentifier:", {identifier});
}
void StructuredAgentLogger::couldNotRejectDonationIdentifier(const std::string& identifier,
                                                             const ErrorPtr& error) {
  log.record("couldNotRejectDonationIdentifier:error:", {identifier, error});
}
void StructuredAgentLogger::willRejectClusterIdentifier(const std::string& identifier) {
  log.record("willRejectClusterIdentifier:", {identifier});
}
void StructuredAgentLogger::didRejectClusterIdentifier(const std::string& identifier) {
  log.record("didRejectClusterIdentifier:", {identifier});
}
void StructuredAgentLogger::couldNotRejectUnknownClusterIdentifier(const std::string& identifier) {
  log.record("couldNotRejectUnknownClusterIdentifier:", {identifier});
}
void StructuredAgentLogger::couldNotRejectClusterIdentifier(const std::string& identifier,
                                                            const ErrorPtr& error) {
  log.record("couldNotRejectClusterIdentifier:error:", {identifier, error});
}
void StructuredAgentLogger::willListRejections() { log.record("willListRejections"); }
void StructuredAgentLogger::didListRejections() { log.record("didListRejections"); }
void StructuredAgentLogger::willRemoveAllRejections() { log.record("willRemoveAllRejections"); }
void StructuredAgentLogger::didRemoveAllRejections() { log.record("didRemoveAllRejections"); }
void StructuredAgentLogger::willRenewValues(const DonationValues& values,
                                            const std::string& withDonor) {
  log.record("willRenewValues:withDonor:", {std::cref(values), withDonor});
}
void StructuredAgentLogger::didRenewValue(const DonationValuePtr& value, Date untilDate) {
  log.record("didRenewValue:untilDate:", {value, untilDate});
}
void StructuredAgentLogger::couldNotRenewBecauseNotADonorExtension(const std::string& object) {
  log.record("couldNotRenewBecauseNotADonorExtension:", {object});
}
void StructuredAgentLogger::couldNotRenewBecauseDonorError(const ErrorPtr& error) {
  log.record("couldNotRenewBecauseDonorError:", {error});
}
void StructuredAgentLogger::couldNotRenewBecauseLoadingError(const ErrorPtr& error) {
  log.record("couldNotRenewBecauseLoadingError:", {error});
}

}  // namespace quenlet
