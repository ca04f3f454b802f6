#pragma once

#include <sys/types.h>

#include <string>

#include "model/DonationValue.h"
#include "quenlet/Error.h"

namespace quenlet {

// The agent's structured event log, with one operation per event. A request name is an operation's
// full keyword form, such as "fetchDonatedMeCard:". Thread-safe; logging never fails and blocks on
// nothing but the log's own sink.
class AgentLogger {
 public:
  virtual ~AgentLogger() = default;

  virtual void agentWillStart() = 0;
  virtual void agentDidStart() = 0;
  virtual void agentWillStop() = 0;
  virtual void donationServiceWillStart() = 0;
  virtual void donationServiceDidStart() = 0;
  virtual void donationServiceWillStop() = 0;
  virtual void maintenanceServiceWillStart() = 0;
  virtual void maintenanceServiceDidStart() = 0;
  virtual void maintenanceServiceWillStop() = 0;

  virtual void beginRestorePersistedState() = 0;
  virtual void endRestorePersistedState() = 0;

  virtual void acceptingConnectionFromProcess(pid_t processIdentifier) = 0;
  virtual void denyingRequestFromProcess(pid_t processIdentifier) = 0;
  // Says which program the denied process runs.
  virtual void deniedProcess(pid_t processIdentifier, const std::string& executable) = 0;
  virtual void acceptingDonations(const DonationValues& values) = 0;
  virtual void preExpiredDonations(const DonationValues& values) = 0;
  virtual void agentWillHandleRequest(const std::string& requestName) = 0;
  virtual void agentDidHandleRequest(const std::string& requestName) = 0;
  virtual void featureNotEnabled(const std::string& requestName) = 0;

  virtual void featureWillDisable() = 0;
  virtual void featureWillEnable() = 0;
  virtual void featureDidDisable() = 0;
  virtual void featureDidEnable() = 0;

  virtual void contactsChangedNotificationFoundName(bool found, bool nameChanged) = 0;
  virtual void contactsChangedNotificationEmailAddressesChanged(bool changed) = 0;

  // Extensions and other objects from discovery are logged by their description.
  virtual void willDiscoverExtensions() = 0;
  virtual void didDiscoverExtension(const std::string& extension) = 0;
  virtual void didDiscoverUnexpectedExtensionType(const std::string& object) = 0;
  virtual void didDiscoverExtensions() = 0;
  virtual void didFailToDiscoverExtensions(const ErrorPtr& error) = 0;
  virtual void willLoadExtensionVersions() = 0;
  virtual void willSaveExtensionVersions() = 0;

  virtual void willRejectDonationIdentifier(const std::string& identifier) = 0;
  virtual void didRejectDonationIdentifier(const std::string& identifier) = 0;
  virtual void couldNotRejectUnknownDonationIdentifier(const std::string& identifier) = 0;
  virtual void couldNotRejectDonationIdentifier(const std::string& identifier,
                                                const ErrorPtr& error) = 0;
  virtual void willRejectClusterIdentifier(const std::string& identifier) = 0;
  virtual void didRejectClusterIdentifier(const std::string& identifier) = 0;
  virtual void couldNotRejectUnknownClusterIdentifier(const std::string& identifier) = 0;
  virtual void couldNotRejectClusterIdentifier(const std::string& identifier,
                                               const ErrorPtr& error) = 0;
  virtual void willListRejections() = 0;
  virtual void didListRejections() = 0;
  virtual void willRemoveAllRejections() = 0;
  virtual void didRemoveAllRejections() = 0;

  virtual void willRenewValues(const DonationValues& values, const std::string& withDonor) = 0;
  virtual void didRenewValue(const DonationValuePtr& value, Date untilDate) = 0;
  virtual void couldNotRenewBecauseNotADonorExtension(const std::string& object) = 0;
  virtual void couldNotRenewBecauseDonorError(const ErrorPtr& error) = 0;
  virtual void couldNotRenewBecauseLoadingError(const ErrorPtr& error) = 0;
};

}  // namespace quenlet
