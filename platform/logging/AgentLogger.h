#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <utility>

#include "model/DonationValue.h"
#include "platform/logging/StructuredLog.h"
#include "quenlet/Error.h"

namespace quenlet {

// The agent's structured event log, with one operation per event. A request name is an operation's
// full keyword form, such as "fetchDonatedMeCard:". Thread-safe; logging never fails and blocks on
// nothing but the log's own sink.
class AgentLogger final {
 public:
  explicit AgentLogger(StructuredLog structuredLog) : log(std::move(structuredLog)) {}

  void agentWillStart() { log.record("agentWillStart"); }
  void agentDidStart() { log.record("agentDidStart"); }
  void agentWillStop() { log.record("agentWillStop"); }
  void donationServiceWillStart() { log.record("donationServiceWillStart"); }
  void donationServiceDidStart() { log.record("donationServiceDidStart"); }
  void donationServiceWillStop() { log.record("donationServiceWillStop"); }
  void maintenanceServiceWillStart() { log.record("maintenanceServiceWillStart"); }
  void maintenanceServiceDidStart() { log.record("maintenanceServiceDidStart"); }
  void maintenanceServiceWillStop() { log.record("maintenanceServiceWillStop"); }

  void beginRestorePersistedState() { log.record("beginRestorePersistedState"); }
  void endRestorePersistedState() { log.record("endRestorePersistedState"); }

  void acceptingConnectionFromProcess(pid_t processIdentifier) {
    log.record("acceptingConnectionFromProcess:", {std::int64_t{processIdentifier}});
  }
  void denyingRequestFromProcess(pid_t processIdentifier) {
    log.record("denyingRequestFromProcess:", {std::int64_t{processIdentifier}});
  }
  // Says which program the denied process runs.
  void deniedProcess(pid_t processIdentifier, const std::string& executable) {
    log.record("deniedProcess:executable:", {std::int64_t{processIdentifier}, executable});
  }
  void acceptingDonations(const DonationValues& values) {
    log.record("acceptingDonations:", {std::cref(values)});
  }
  void preExpiredDonations(const DonationValues& values) {
    log.record("preExpiredDonations:", {std::cref(values)});
  }
  void agentWillHandleRequest(const std::string& requestName) {
    log.record("agentWillHandleRequest:", {requestName});
  }
  void agentDidHandleRequest(const std::string& requestName) {
    log.record("agentDidHandleRequest:", {requestName});
  }
  void featureNotEnabled(const std::string& requestName) {
    log.record("featureNotEnabled:", {requestName});
  }

  void featureWillDisable() { log.record("featureWillDisable"); }
  void featureWillEnable() { log.record("featureWillEnable"); }
  void featureDidDisable() { log.record("featureDidDisable"); }
  void featureDidEnable() { log.record("featureDidEnable"); }

  void contactsChangedNotificationFoundName(bool found, bool nameChanged) {
    log.record("contactsChangedNotificationFoundName:nameChanged:", {found, nameChanged});
  }
  void contactsChangedNotificationEmailAddressesChanged(bool changed) {
    log.record("contactsChangedNotificationEmailAddressesChanged:", {changed});
  }

  // Extensions and other objects from discovery are logged by their description.
  void willDiscoverExtensions() { log.record("willDiscoverExtensions"); }
  void didDiscoverExtension(const std::string& extension) {
    log.record("didDiscoverExtension:", {extension});
  }
  void didDiscoverUnexpectedExtensionType(const std::string& object) {
    log.record("didDiscoverUnexpectedExtensionType:", {object});
  }
  void didDiscoverExtensions() { log.record("didDiscoverExtensions"); }
  void didFailToDiscoverExtensions(const ErrorPtr& error) {
    log.record("didFailToDiscoverExtensions:", {error});
  }
  void willLoadExtensionVersions() { log.record("willLoadExtensionVersions"); }
  void willSaveExtensionVersions() { log.record("willSaveExtensionVersions"); }

  void willRejectDonationIdentifier(const std::string& identifier) {
    log.record("willRejectDonationIdentifier:", {identifier});
  }
  void didRejectDonationIdentifier(const std::string& identifier) {
    log.record("didRejectDonationIdentifier:", {identifier});
  }
  void couldNotRejectUnknownDonationIdentifier(const std::string& identifier) {
    log.record("couldNotRejectUnknownDonationIdentifier:", {identifier});
  }
  void couldNotRejectDonationIdentifier(const std::string& identifier, const ErrorPtr& error) {
    log.record("couldNotRejectDonationIdentifier:error:", {identifier, error});
  }
  void willRejectClusterIdentifier(const std::string& identifier) {
    log.record("willRejectClusterIdentifier:", {identifier});
  }
  void didRejectClusterIdentifier(const std::string& identifier) {
    log.record("didRejectClusterIdentifier:", {identifier});
  }
  void couldNotRejectUnknownClusterIdentifier(const std::string& identifier) {
    log.record("couldNotRejectUnknownClusterIdentifier:", {identifier});
  }
  void couldNotRejectClusterIdentifier(const std::string& identifier, const ErrorPtr& error) {
    log.record("couldNotRejectClusterIdentifier:error:", {identifier, error});
  }
  void willListRejections() { log.record("willListRejections"); }
  void didListRejections() { log.record("didListRejections"); }
  void willRemoveAllRejections() { log.record("willRemoveAllRejections"); }
  void didRemoveAllRejections() { log.record("didRemoveAllRejections"); }

  void willRenewValues(const DonationValues& values, const std::string& withDonor) {
    log.record("willRenewValues:withDonor:", {std::cref(values), withDonor});
  }
  void didRenewValue(const DonationValuePtr& value, Date untilDate) {
    log.record("didRenewValue:untilDate:", {value, untilDate});
  }
  void couldNotRenewBecauseNotADonorExtension(const std::string& object) {
    log.record("couldNotRenewBecauseNotADonorExtension:", {object});
  }
  void couldNotRenewBecauseDonorError(const ErrorPtr& error) {
    log.record("couldNotRenewBecauseDonorError:", {error});
  }
  void couldNotRenewBecauseLoadingError(const ErrorPtr& error) {
    log.record("couldNotRenewBecauseLoadingError:", {error});
  }

 private:
  const StructuredLog log;
};

}  // namespace quenlet
