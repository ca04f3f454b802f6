#include "sources/accounts/AccountPropertyParser.h"

#include <algorithm>
#include <utility>

#include "platform/contacts/ContactStore.h"
#include "platform/contacts/EmailAddressScanner.h"

namespace quenlet {
namespace {

constexpr std::string_view identityServiceHostName = "id.ovaro.services";

using Address = std::optional<std::string>;
using EmailExtractor = Address (*)(const Account& account);

bool isBlacklisted(const Account& account) {
  if (!account.accountType || !account.accountType->identifier) return false;
  const auto& types = AccountPropertyEmailParser::blacklistedAccountTypes;
  return std::find(types.begin(), types.end(), *account.accountType->identifier) != types.end();
}

Address fromUsername(const Account& account) {
  if (isBlacklisted(account)) return std::nullopt;
  return AccountPropertyEmailParser::firstEmailAddressIn(account.username);
}

Address fromPrimaryEmail(const Account& account) {
  const std::string* address = findString(account.properties, "primaryEmail");
  if (!address) return std::nullopt;
  const PropertyList* identity = findEntry(account.properties, "ovaroId");
  if (identity && identity->integer()) return std::nullopt;
  if (address->ends_with(identityServiceHostName)) return std::nullopt;
  return *address;
}

template <const char* Key>
Address fromProperty(const Account& account) {
  if (isBlacklisted(account)) return std::nullopt;
  const std::string* text = findString(account.properties, Key);
  if (!text) return std::nullopt;
  return AccountPropertyEmailParser::firstEmailAddressIn(*text);
}

constexpr char identityEmailAddressKey[] = "IdentityEmailAddress";
constexpr char userNameKey[] = "userName";
constexpr char qualifiedUsernameKey[] = "qualifiedUsername";
constexpr char emailAddressKey[] = "RuvoAccountEmailAddress";

constexpr std::array<EmailExtractor, 6> emailExtractors = {
    &fromUsername,
    &fromPrimaryEmail,
    &fromProperty<identityEmailAddressKey>,
    &fromProperty<userNameKey>,
    &fromProperty<qualifiedUsernameKey>,
    &fromProperty<emailAddressKey>,
};

}  // namespace

std::optional<AccountPropertyEmailParser::LabeledAddress>
AccountPropertyEmailParser::parseEmailWithAccount(const Account& account) {
  for (const EmailExtractor extract : emailExtractors) {
    if (Address address = extract(account)) return LabeledAddress{*std::move(address), LabelHome};
  }
  return std::nullopt;
}

std::optional<std::string> AccountPropertyEmailParser::firstEmailAddressIn(
    const std::optional<std::string>& text) {
  if (!text) return std::nullopt;
  return EmailAddressScanner().firstEmailAddressInString(*text);
}

}  // namespace quenlet
