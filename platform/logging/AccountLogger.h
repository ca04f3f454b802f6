#pragma once

#include <string>
#include <utility>

#include "model/DonationValue.h"
#include "platform/accounts/Account.h"
#include "platform/logging/StructuredLog.h"
#include "quenlet/Error.h"

namespace quenlet {

// Writes account events to a structured log, each under its full keyword name. An account is
// written as its identifier and type. Thread-safe.
class AccountLogger final {
 public:
  explicit AccountLogger(StructuredLog structuredLog) : log(std::move(structuredLog)) {}

  void accountAdded(const AccountPtr& account) {
    log.record("accountAdded:", {account->description()});
  }
  void accountChanged(const AccountPtr& account) {
    log.record("accountChanged:", {account->description()});
  }
  void accountRemoved(const AccountPtr& account) {
    log.record("accountRemoved:", {account->description()});
  }
  void accountsDidNotChange() { log.record("accountsDidNotChange"); }
  void donating(const DonationValuePtr& value) { log.record("donating:", {value}); }
  void removing(const std::string& donationIdentifier) {
    log.record("removing:", {donationIdentifier});
  }
  void donationFailedWithError(const ErrorPtr& error) {
    log.record("donationFailedWithError:", {error});
  }
  void removalFailedWithError(const ErrorPtr& error) {
    log.record("removalFailedWithError:", {error});
  }
  void pluginLoaded() { log.record("pluginLoaded"); }
  void pluginUnloaded() { log.record("pluginUnloaded"); }

 private:
  const StructuredLog log;
};

}  // namespace quenlet
