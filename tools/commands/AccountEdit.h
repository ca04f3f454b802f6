#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/accounts/Account.h"
#include "tools/commands/Session.h"

namespace quenlet {

// The options of "account add" and "account change". Call addTo() and applyTo() once each.
class AccountEdit final {
 public:
  enum class Options { ofNewAccount, ofPresentAccount };

  void addTo(CLI::App& word, Options options);

  // Changes only what the options give. An error when the file of properties cannot be read.
  [[nodiscard]] ErrorPtr applyTo(Account& account) const;

  std::string identifier;

 private:
  void addPropertiesTo(CLI::App& word, Options options);
  [[nodiscard]] ErrorPtr applyPropertiesTo(Account& account) const;

  std::optional<std::string> type;
  std::optional<std::string> username;
  std::optional<bool> isActive;
  bool dropsDataClasses = false;
  std::vector<std::string> dataClasses;
  std::string propertiesFile;
  std::vector<std::string> properties;  // "KEY=VALUE"
  std::vector<std::string> droppedProperties;
};

}  // namespace quenlet
