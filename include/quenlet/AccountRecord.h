#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

namespace quenlet {

// An account of the owner's, as the agent is told of it. A value type.
struct AccountRecord final {
  std::string identifier = {};           // not empty
  std::optional<std::string> type = {};  // as in "ovaro.account.IMAP"
  std::optional<std::string> username = {};
  bool isActive = true;
  std::set<std::string> dataClasses = {};  // what it is used for, as in "mail"
  // Properties whose value is a text, as in "FullUserName".
  std::map<std::string, std::string> textProperties = {};
  // All other properties: the text of an XML property list with a dictionary; empty for none. Of
  // equal keys, the one in `textProperties` counts.
  std::string propertyList = {};

  friend bool operator==(const AccountRecord&, const AccountRecord&) = default;
};

}  // namespace quenlet
