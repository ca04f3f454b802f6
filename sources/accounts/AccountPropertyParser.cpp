#include "sources/accounts/AccountPropertyParser.h"

#include <utility>

#include "platform/PlatformServices.h"

namespace quenlet {

AccountPropertyParser AccountPropertyParser::parserForNow() {
  const Date now = PlatformServices::current().now();
  return {now, now.addingSeconds(defaultDonationTTLSeconds)};
}

DonationValues AccountPropertyParser::parseWithAccount(const Account& account) const {
  DonationValues values;
  if (auto name = AccountPropertyNameParser::parseNameWithAccount(account)) {
    values.push_back(DonationValue::donationValueWithNameComponents(
        *std::move(name),
        makeOriginWithDonationIdentifier(nameIdentifierOf(account), account.identifier)));
  }
  if (auto email = AccountPropertyEmailParser::parseEmailWithAccount(account)) {
    values.push_back(DonationValue::donationValueWithEmailAddress(
        std::move(email->address), std::move(email->label),
        makeOriginWithDonationIdentifier(emailIdentifierOf(account), account.identifier)));
  }
  return values;
}

DonationOrigin AccountPropertyParser::makeOriginWithDonationIdentifier(
    std::string donationIdentifier, std::string clusterIdentifier) const {
  return {bundleIdentifier, std::move(donationIdentifier), std::move(clusterIdentifier),
          donationDate, expirationDate};
}

std::string AccountPropertyParser::nameIdentifierOf(const Account& account) {
  return "name:" + account.identifier;
}

std::string AccountPropertyParser::emailIdentifierOf(const Account& account) {
  return "email:" + account.identifier;
}

}  // namespace quenlet
