#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/telephony/Telephony.h"

namespace quenlet {

// A SIM card as a modem reads it. A value type.
struct SIMCard final {
  // The number that the card itself has (ICCID): it identifies a person and is never logged. Empty
  // when the modem does not tell.
  std::string identifier;
  // Its phone numbers as the card has them, in its order.
  std::vector<std::string> numbers;
};

enum class CardState : std::uint8_t {
  unknown,   // locked, starting, failed: some card may be in the modem
  absent,    // there is none
  readable,  // `card` is what is on it
};

// What a daemon says of one modem. A value type.
struct Modem final {
  // Where the modem is, for example its path in the tree of devices: the same when it comes back.
  std::string place;
  CardState state = CardState::unknown;
  // Without numbers unless the card is readable.
  SIMCard card;
};

// Makes one list of the owner's numbers of what the daemons say of their modems, so that a number
// goes only when another card has taken its card's place. Modems come and go: in a suspend, with a
// daemon, while a card is locked. Not thread-safe.
//
//   what is there                                          numbers that were written
//   no modem with a readable card                          stay, all of them
//   their card, readable, has no numbers                   stay: not read yet
//   their card, readable, has other numbers                are replaced
//   their modem is away, locked, or has not come yet       stay
//   their card was replaced or taken out, as we saw        go, if any card is readable
//   nobody saw where their card was, and another card      go: it is in that one's place
//   is new, or a modem without a card
class ModemCards final {
 public:
  // What a daemon says beyond these is left out.
  static constexpr std::size_t maximumModems = 16;
  static constexpr std::size_t maximumNumbersOfCard = 16;
  // With more than these, modems that are away are forgotten.
  static constexpr std::size_t maximumPlaces = 64;
  static constexpr std::size_t maximumNumberSizeInBytes = 64;

  // `daemon` has these modems now, and no others. Without any, the daemon may have ended.
  void setModems(const std::string& daemon, const std::vector<Modem>& modems);

  // The list to write in place of `written`; nothing when that is to stay as it is. Entries of
  // `written` that were not made here stay. Text that cannot be a phone number is left out.
  [[nodiscard]] std::optional<SIMCardItems> listInPlaceOf(const SIMCardItems& written) const;

  // "sim-" and 16 hexadecimal digits: the same for the same number on the same card.
  [[nodiscard]] static std::string identifierOf(const std::string& cardIdentifier,
                                                const std::string& number);

 private:
  struct Place final {
    CardState state = CardState::unknown;
    // The card there now, or the last one while none can be read. None while nothing is known.
    std::optional<SIMCard> card;
    // The one that was there before it, if we saw it.
    std::optional<SIMCard> former;
  };

  static void setModem(Place& place, const Modem& modem);
  void forgetPlacesBut(const std::string& daemon, const std::vector<Modem>& modems);
  [[nodiscard]] bool staysInList(const SIMCardItem& item, bool hasNewcomer) const;
  [[nodiscard]] bool hasNewcomer(const SIMCardItems& written) const;

  // By daemon and the modem's place.
  std::map<std::pair<std::string, std::string>, Place> places;
};

}  // namespace quenlet
