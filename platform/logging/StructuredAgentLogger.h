#pragma once

#include "platform/logging/AgentLogger.h"
#include "platform/logging/StructuredLog.h"

namespace quenlet {

// Writes the agent's events to a structured log, each under its full keyword name. Thread-safe.
class StructuredAgentLogger final : public AgentLogger {
 public:
  explicit StructuredAgentLogger(StructuredLog structuredLog) : log(std::move(structuredLog)) {}

  void agentWillStart() override;
  void agentDidStart() override;
  void agentWillStop() override;
  void donationServiceWillStart() override;
  void donationServiceDidStart() override;
  void donationServiceWillStop() override;
  void maintenanceServiceWillStart() override;
  void maintenanceServiceDidStart() override;
  void maintenanceServiceWillStop() override;
  void beginRestorePersistedState() override;
  void endRestorePersistedState() override;
  void acceptingConnectionFromProcess(pid_t processIdentifier) override;
  void denyingRequestFromProcess(pid_t processIdentifier) override;
  void deniedProcess(pid_t processIdentifier, const std::string& executable) override;
  void acceptingDonations(const DonationValues& values) override;
  void preExpiredDonations(const DonationValues& values) override;
  void agentWillHandleRequest(const std::string& requestName) override;
  void agentDidHandleRequest(const std::string& requestName) override;
  void featureNotEnabled(const std::string& requestName) override;
  void featureWillDisable() override;
  void featureWillEnable() override;
  void featureDidDisable() override;
  void featureDidEnable() override;
  void contactsChangedNotificationFoundName(bool found, bool nameChanged) override;
  void contactsChangedNotificationEmailAddressesChanged(bool changed) override;
  void willDiscoverExtensions() override;
  void didDiscoverExtension(const std::string& extension) override;
  void didDiscoverUnexpectedExtensionType(const std::string& object) override;
  void didDiscoverExtensions() override;
  void didFailToDiscoverExtensions(const ErrorPtr& error) override;
  void willLoadExtensionVersions() override;
  void willSaveExtensionVersions() override;
  void willRejectDonationIdentifier(const std::string& identifier) override;
  void didRejectDonationIdentifier(const std::string& identifier) override;
  void couldNotRejectUnknownDonationIdentifier(const std::string& identifier) override;
  void couldNotRejectDonationIdentifier(const std::string& identifier,
                                        const ErrorPtr& error) override;
  void willRejectClusterIdentifier(const std::string& identifier) override;
  void didRejectClusterIdentifier(const std::string& identifier) override;
  void couldNotRejectUnknownClusterIdentifier(const std::string& identifier) override;
  void couldNotRejectClusterIdentifier(const std::string& identifier,
                                       const ErrorPtr& error) override;
  void willListRejections() override;
  void didListRejections() override;
  void willRemoveAllRejections() override;
  void didRemoveAllRejections() override;
  void willRenewValues(const DonationValues& values, const std::string& withDonor) override;
  void didRenewValue(const DonationValuePtr& value, Date untilDate) override;
  void couldNotRenewBecauseNotADonorExtension(const std::string& object) override;
  void couldNotRenewBecauseDonorError(const ErrorPtr& error) override;
  void couldNotRenewBecauseLoadingError(const ErrorPtr& error) override;

 private:
  StructuredLog log;
};

}  // namespace quenlet
