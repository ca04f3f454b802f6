#pragma once

#include <string>

#include "apps/CardKind.h"
#include "bus/BusValue.h"
#include "quenlet/Card.h"

// The card as callers get it. Pure functions.
namespace quenlet {

// Whether entries say which donation they come from: only programs of the host are told, since it
// names other programs of the owner's.
enum class Sources { told, kept };

// The card with values of these kinds only.
[[nodiscard]] Card limitedTo(Card card, const CardKinds& kinds);
// Under the keys of `quenlet card --json`: "name" is a{sv}; "emailAddresses", "phoneNumbers" and
// "postalAddresses" are aa{sv} with "value", "label" and "origin"; "imageBytes" is x. In addition
// "imageData", ay, if there is an image.
[[nodiscard]] BusDictionary cardDictionary(const Card& card, Sources sources);
// As vCard 4.0.
[[nodiscard]] std::string vCardOf(const Card& card);

}  // namespace quenlet
