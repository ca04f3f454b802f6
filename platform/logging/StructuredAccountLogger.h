#pragma once

#include "platform/logging/AccountLogger.h"
#include "platform/logging/StructuredLog.h"

namespace quenlet {

// Writes account events to a structured log, each under its full keyword name. An account is
// written as its identifier and type. Thread-safe.
class StructuredAccountLogger final : public AccountLogger {
 public:
  explicit StructuredAccountLogger(StructuredLog structuredLog) : log(std::move(structuredLog)) {}

  void accountAdded(const AccountPtr& account) override {
    log.record("accountAdded:", {account->description()});
  }
  void accountChanged(const AccountPtr& account) override {
    log.record("accountChanged:", {account->description()});
  }
  void accountRemoved(const AccountPtr& account) override {
    log.record("accountRemoved:", {account->description()});
  }
  void accountsDidNotChange() override { log.record("accountsDidNotChange"); }
  void donating(const DonationValuePtr& value) override { log.record("donating:", {value}); }
  void removing(const std::string& donationIdentifier) override {
    log.record("removing:", {donationIdentifier});
  }
  void donationFailedWithError(const ErrorPtr& error) override {
    log.record("donationFailedWithError:", {error});
  }
  void removalFailedWithError(const ErrorPtr& error) override {
    log.record("removalFailedWithError:", {error});
  }
  void pluginLoaded() override { log.record("pluginLoaded"); }
  void pluginUnloaded() override { log.record("pluginUnloaded"); }

 private:
  const StructuredLog log;
};

}  // namespace quenlet
