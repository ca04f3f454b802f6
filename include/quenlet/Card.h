#pragma once

#include <optional>
#include <string>
#include <vector>

#include "quenlet/Date.h"
#include "quenlet/Values.h"

namespace quenlet {

// The donation that an entry of the card comes from. A value type.
struct Source final {
  std::string bundleIdentifier = {};
  std::string donationIdentifier = {};
  std::optional<std::string> clusterIdentifier = {};
  Date donationDate = {};
  Date expirationDate = {};

  friend bool operator==(const Source&, const Source&) = default;
};

// One entry of a list of the card. A value type.
template <typename T>
struct CardEntry final {
  T value = {};
  std::string label = {};
  std::optional<Source> source = {};

  friend bool operator==(const CardEntry&, const CardEntry&) = default;
};

// The donated me card: what the agent has made of all donations. A value type.
struct Card final {
  Name name = {};  // without empty components
  std::vector<CardEntry<std::string>> emailAddresses = {};
  std::vector<CardEntry<std::string>> phoneNumbers = {};
  std::vector<CardEntry<Address>> postalAddresses = {};
  std::optional<Image> image = {};

  friend bool operator==(const Card&, const Card&) = default;
};

}  // namespace quenlet
