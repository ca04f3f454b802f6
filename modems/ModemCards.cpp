#include "modems/ModemCards.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/foundation/SHA256.h"

namespace quenlet {
namespace {

constexpr std::string_view ownPrefix = "sim-";

// As cards have them: "+49 170 1234567". Others would be no phone number to anybody.
bool isPlausible(const std::string& number) {
  return number.size() <= ModemCards::maximumNumberSizeInBytes &&
         number.find_first_of("0123456789") != number.npos &&
         number.find_first_not_of("0123456789+*#()-./ ") == number.npos;
}

SIMCard plausible(const SIMCard& card) {
  SIMCard kept{card.identifier, {}};
  for (const std::string& number : card.numbers) {
    if (kept.numbers.size() == ModemCards::maximumNumbersOfCard) break;
    if (isPlausible(number)) kept.numbers.push_back(number);
  }
  return kept;
}

bool isOnCard(const SIMCardItem& item, const SIMCard& card) {
  return item.identifier == ModemCards::identifierOf(card.identifier, item.value);
}

bool isSameCard(const SIMCard& card, const std::optional<SIMCard>& other) {
  return other && !card.identifier.empty() && card.identifier == other->identifier;
}

bool hasNumber(const SIMCard& card, const std::string& number) {
  return std::find(card.numbers.begin(), card.numbers.end(), number) != card.numbers.end();
}

}  // namespace

std::string ModemCards::identifierOf(const std::string& cardIdentifier, const std::string& number) {
  constexpr std::size_t digestBytes = 8;
  static constexpr char digits[] = "0123456789abcdef";
  // A NUL is in neither, so that no two pairs have the same text.
  const std::string digest = sha256(cardIdentifier + '\0' + number);
  std::string identifier(ownPrefix);
  for (const char byte : digest.substr(0, digestBytes)) {
    identifier += digits[static_cast<unsigned char>(byte) >> 4];
    identifier += digits[static_cast<unsigned char>(byte) & 0xF];
  }
  return identifier;
}

void ModemCards::setModem(Place& place, const Modem& modem) {
  const SIMCard card = plausible(modem.card);
  // One card cannot be told from another if it shows nothing of itself.
  const bool isAnonymous = card.identifier.empty() && card.numbers.empty();
  const bool isReadable = modem.state == CardState::readable && !isAnonymous;
  place.state = isReadable || modem.state == CardState::absent ? modem.state : CardState::unknown;
  if (place.state != CardState::absent && (isAnonymous || isSameCard(card, place.card))) {
    if (!isAnonymous) place.card = card;
    return;
  }
  if (place.card) place.former = std::move(place.card);
  place.card.reset();
  if (place.state != CardState::absent) place.card = card;
}

void ModemCards::setModems(const std::string& daemon, const std::vector<Modem>& modems) {
  for (auto& [key, place] : places) {
    if (key.first == daemon) place.state = CardState::unknown;
  }
  const std::vector<Modem> believed(
      modems.begin(),
      modems.begin() + static_cast<std::ptrdiff_t>(std::min(modems.size(), maximumModems)));
  for (const Modem& modem : believed) setModem(places[{daemon, modem.place}], modem);
  forgetPlacesBut(daemon, believed);
}

// Keeps modems that are away only if they took a card along that is not elsewhere now.
void ModemCards::forgetPlacesBut(const std::string& daemon, const std::vector<Modem>& modems) {
  const bool areTooMany = places.size() > maximumPlaces;
  std::erase_if(places, [&](const auto& entry) {
    const auto& [key, place] = entry;
    if (key.first != daemon) return false;
    bool hasMoved = false;
    for (const Modem& modem : modems) {
      if (modem.place == key.second) return false;
      hasMoved = hasMoved || isSameCard(modem.card, place.card);
    }
    return !place.card || hasMoved || areTooMany;
  });
}

bool ModemCards::staysInList(const SIMCardItem& item, bool hasNewcomer) const {
  if (!item.identifier.starts_with(ownPrefix)) return true;
  bool mayBeElsewhere = false;
  bool hasLeft = hasNewcomer;
  for (const auto& [key, place] : places) {
    const bool isHere = place.card && isOnCard(item, *place.card);
    if (place.state == CardState::readable && isHere) {
      return place.card->numbers.empty() || hasNumber(*place.card, item.value);
    }
    if (place.state == CardState::unknown && (isHere || !place.card)) mayBeElsewhere = true;
    if (place.former && isOnCard(item, *place.former)) hasLeft = true;
  }
  return mayBeElsewhere || !hasLeft;
}

// Whether a place that had some card before we looked has another one, or none, now.
bool ModemCards::hasNewcomer(const SIMCardItems& written) const {
  return std::any_of(places.begin(), places.end(), [&written](const auto& entry) {
    const Place& place = entry.second;
    if (place.former || place.state == CardState::unknown) return false;
    return place.state == CardState::absent ||
           std::none_of(written.begin(), written.end(),
                        [&place](const SIMCardItem& item) { return isOnCard(item, *place.card); });
  });
}

std::optional<SIMCardItems> ModemCards::listInPlaceOf(const SIMCardItems& written) const {
  SIMCardItems list;
  const bool isReplacing = hasNewcomer(written);
  for (const SIMCardItem& item : written) {
    if (staysInList(item, isReplacing)) list.push_back(item);
  }
  bool anyIsReadable = false;
  for (const auto& [key, place] : places) {
    if (place.state != CardState::readable) continue;
    anyIsReadable = true;
    for (const std::string& number : place.card->numbers) {
      const SIMCardItem item{identifierOf(place.card->identifier, number), number};
      if (std::find(list.begin(), list.end(), item) == list.end()) list.push_back(item);
    }
  }
  if (!anyIsReadable || list == written) return std::nullopt;
  return list;
}

}  // namespace quenlet
