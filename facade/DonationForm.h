#pragma once

#include <optional>
#include <string>
#include <vector>

#include "bus/BusValue.h"
#include "quenlet/AccountRecord.h"
#include "quenlet/Donation.h"
#include "quenlet/Result.h"

// Donations and accounts as callers write and read them, with the keys of the command's JSON.
// Bounded: what is too large is TooLarge, what is not understood InvalidArgs; the errors name the
// place of a donation in its list and quote nothing. Pure functions.
namespace quenlet {

inline constexpr std::size_t mostDonationsInCall = 1000;
inline constexpr std::size_t mostBytesInIdentifier = 1024;

// An aa{sv}. Each has "kind", "value" (a text; a{sv} for "name" and "postalAddress"; ay for
// "imageData"), perhaps "label", and "origin" with "donationIdentifier", and perhaps
// "bundleIdentifier", "clusterIdentifier", "donationDate" and "expirationDate".
[[nodiscard]] Result<std::vector<Donation>> donationsIn(const BusValue& list);
// The same keys; for an image "value" is its size, as x.
[[nodiscard]] BusDictionary donationDictionary(const Donation& donation);

// An as of identifiers.
[[nodiscard]] Result<std::vector<std::string>> identifiersIn(const BusValue& list);

// "identifier", "type", "username", "active", "dataClasses" and "properties", an a{sv} of texts.
// Nothing for an empty dictionary.
[[nodiscard]] Result<std::optional<AccountRecord>> accountIn(const BusValue& account);

// What an app donates, is told of and removes is its own: its identifier is the bundle, and stands
// before its identifiers in the agent, but not where the app sees them.
[[nodiscard]] ErrorPtr claimForApp(const std::string& app, std::vector<Donation>& donations);
[[nodiscard]] std::string identifierOfApp(const std::string& app, const std::string& identifier);
// The app's own donations, as it gave them.
[[nodiscard]] std::vector<Donation> donationsOfApp(const std::string& app,
                                                   std::vector<Donation> all);

}  // namespace quenlet
