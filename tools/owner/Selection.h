#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "model/DonationValue.h"

// What an owner who names a donation or a value means by it. Pure functions.
namespace quenlet {

// How a text named donations.
enum class SelectedBy : std::uint8_t { identifier, number, value };

struct Selection final {
  SelectedBy by = SelectedBy::value;
  // Places in the list, from 0, ascending; empty when nothing matches.
  std::vector<std::size_t> places;
};

// The donations of `list`, the agent's list in its order, that `text` names. The first of these
// that matches decides:
//
//   identifier  the donation identifier, canonically equivalent
//   number      a place in the list, from 1, as `list` shows it
//   value       as in isValueNamed(); all donations of that value
[[nodiscard]] Selection select(const DonationValues& list, std::string_view text);

// Whether `text` is the value itself, as people write it: an e-mail address in its normal form, the
// digits of a phone number, or, in any letter case and with any blanks, the text of a name or a
// postal address. A name may also be given without what is around the given and the family name. No
// text is an image.
[[nodiscard]] bool isValueNamed(const Value& value, std::string_view text);

// The number that `text` consists of; 0 when it is not a number, or not one of a list.
[[nodiscard]] std::size_t placeNumber(std::string_view text);

}  // namespace quenlet
