#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/foundation/PropertyList.h"

namespace quenlet {

// How a postal address is meant to be laid out; kept with a donation, not used by the agent.
enum class PostalAddressStyle : std::int64_t { mailingAddress = 0, abbreviated = 1 };

// A postal address; a field that does not apply is empty. A value type.
struct PostalAddress final {
  using Field = std::string PostalAddress::*;

  std::string street = {};  // may hold several lines
  std::string subLocality = {};
  std::string city = {};
  std::string subAdministrativeArea = {};
  std::string state = {};
  std::string postalCode = {};
  std::string country = {};
  std::string isoCountryCode = {};

  // The non-empty fields, each under the key of its name ("street", "isoCountryCode").
  [[nodiscard]] PropertyListDictionary dictionaryRepresentation() const;
  // `postalAddressWithDictionaryRepresentation:`. Unknown keys are ignored. Nothing when a known
  // key holds anything but a string, or no known key is present.
  [[nodiscard]] static std::optional<PostalAddress> postalAddressWithDictionaryRepresentation(
      const PropertyListDictionary& entries);

  // The same text for equal addresses, and for no others.
  [[nodiscard]] std::string key() const;
  // The field under `key` in the dictionary form; null for an unknown key.
  [[nodiscard]] static Field fieldForKey(std::string_view key);

  // Compares all fields by canonical equivalence.
  friend bool operator==(const PostalAddress& a, const PostalAddress& b);
};

// In ascending order of the keys.
inline constexpr std::array<std::pair<std::string_view, PostalAddress::Field>, 8>
    postalFieldsByKey = {{{"city", &PostalAddress::city},
                          {"country", &PostalAddress::country},
                          {"isoCountryCode", &PostalAddress::isoCountryCode},
                          {"postalCode", &PostalAddress::postalCode},
                          {"state", &PostalAddress::state},
                          {"street", &PostalAddress::street},
                          {"subAdministrativeArea", &PostalAddress::subAdministrativeArea},
                          {"subLocality", &PostalAddress::subLocality}}};

}  // namespace quenlet
