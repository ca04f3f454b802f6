#include "platform/contacts/ValueOrigin.h"

#include <cmath>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

std::optional<double> secondsOfEntry(const PropertyList& entry) {
  if (const Date* date = entry.date()) return date->secondsSince1970();
  if (const std::int64_t* seconds = entry.integer()) return static_cast<double>(*seconds);
  if (const double* seconds = entry.real()) return *seconds;
  return std::nullopt;
}

std::optional<Date> findDate(const PropertyListDictionary& entries, std::string_view key) {
  const PropertyList* entry = findEntry(entries, key);
  const std::optional<double> seconds = entry ? secondsOfEntry(*entry) : std::nullopt;
  if (!seconds || !std::isfinite(*seconds)) return std::nullopt;
  return Date(*seconds);
}

bool sameCluster(const std::optional<std::string>& a, const std::optional<std::string>& b) {
  if (!a || !b) return a.has_value() == b.has_value();
  return canonicallyEqual(*a, *b);
}

}  // namespace

PropertyListDictionary ValueOrigin::dictionaryRepresentation() const {
  PropertyListDictionary entries;
  entries.emplace(bundleIdentifierKey, bundleIdentifier);
  entries.emplace(donationIdentifierKey, donationIdentifier);
  if (clusterIdentifier) entries.emplace(clusterIdentifierKey, *clusterIdentifier);
  entries.emplace(donationDateKey, donationDate.secondsSince1970());
  entries.emplace(expirationDateKey, expirationDate.secondsSince1970());
  return entries;
}

std::optional<ValueOrigin> ValueOrigin::originWithDictionary(
    const PropertyListDictionary& entries) {
  const std::string* bundle = findString(entries, bundleIdentifierKey);
  const std::string* donation = findString(entries, donationIdentifierKey);
  const std::optional<Date> donated = findDate(entries, donationDateKey);
  const std::optional<Date> expires = findDate(entries, expirationDateKey);
  if (!bundle || bundle->empty() || !donation || donation->empty() || !donated || !expires) {
    return std::nullopt;
  }
  ValueOrigin origin(*bundle, *donation, *donated, *expires);
  if (const PropertyList* cluster = findEntry(entries, clusterIdentifierKey)) {
    if (!cluster->string()) return std::nullopt;
    origin.clusterIdentifier = *cluster->string();
  }
  return origin;
}

bool operator==(const ValueOrigin& a, const ValueOrigin& b) {
  return canonicallyEqual(a.bundleIdentifier, b.bundleIdentifier) &&
         canonicallyEqual(a.donationIdentifier, b.donationIdentifier) &&
         sameCluster(a.clusterIdentifier, b.clusterIdentifier) &&
         a.donationDate == b.donationDate && a.expirationDate == b.expirationDate;
}

}  // namespace quenlet
