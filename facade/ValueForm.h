#pragma once

#include <string>
#include <string_view>

#include "bus/BusValue.h"
#include "quenlet/Date.h"
#include "quenlet/Error.h"
#include "quenlet/Values.h"

// Values and their origins as dictionaries, with the keys of the command's JSON. Pure functions.
namespace quenlet {

// A text that a message can hold: what is not UTF-8 and zero bytes become U+FFFD, as in JSON.
[[nodiscard]] std::string busText(std::string_view text);

// Only what is there.
[[nodiscard]] BusDictionary nameDictionary(const Name& name);
[[nodiscard]] BusDictionary addressDictionary(const Address& address);
// Reads the fields under their keys. InvalidArgs if one is not text or a key is unknown, so that no
// misspelt part of a value is lost; TooLarge if one is longer than a text may be.
[[nodiscard]] ErrorPtr readName(const BusDictionary& entries, Name& name);
[[nodiscard]] ErrorPtr readAddress(const BusDictionary& entries, Address& address);

struct DonationSource final {
  std::string_view bundleIdentifier;
  std::string_view donationIdentifier;
  const std::string* clusterIdentifier = nullptr;
  Date donationDate;
  Date expirationDate;
};
[[nodiscard]] BusDictionary sourceDictionary(const DonationSource& source);

}  // namespace quenlet
