#pragma once

#include <string>

#include "model/DonationValue.h"
#include "platform/accounts/Account.h"
#include "quenlet/Error.h"

namespace quenlet {

// The structured event log of account changes. Thread-safe; logging never fails.
class AccountLogger {
 public:
  virtual ~AccountLogger() = default;
  virtual void accountAdded(const AccountPtr& account) = 0;
  virtual void accountChanged(const AccountPtr& account) = 0;
  virtual void accountRemoved(const AccountPtr& account) = 0;
  virtual void accountsDidNotChange() = 0;
  virtual void donating(const DonationValuePtr& value) = 0;
  virtual void removing(const std::string& donationIdentifier) = 0;
  virtual void donationFailedWithError(const ErrorPtr& error) = 0;
  virtual void removalFailedWithError(const ErrorPtr& error) = 0;
  virtual void pluginLoaded() = 0;
  virtual void pluginUnloaded() = 0;
};

}  // namespace quenlet
