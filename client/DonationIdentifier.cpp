#include "client/DonationIdentifier.h"

#include <algorithm>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

// Bytes that are not UTF-8 are escaped too: a bundle identifier may be any bytes.
std::string escaped(std::string_view part) {
  static constexpr char digits[] = "0123456789ABCDEF";
  const bool isText = isValidUTF8(part);
  std::string result;
  for (const char character : part) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte <= 0x20 || byte == 0x7F || character == '%' || character == ':' ||
        (byte >= 0x80 && !isText)) {
      result += {'%', digits[byte >> 4], digits[byte & 0xF]};
    } else {
      result += character;
    }
  }
  return result;
}

// "urn:uuid:" or nothing, then "4fbe8971-0d1f-4f35-9a52-6d0f3f6b1c01".
bool isUUID(std::string_view uid) {
  constexpr std::string_view form = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  constexpr std::string_view scheme = "urn:uuid:";
  if (lowercased(uid.substr(0, scheme.size())) == scheme) uid.remove_prefix(scheme.size());
  const auto fits = [](char character, char place) {
    const bool isDigit =
        std::string_view("0123456789abcdefABCDEF").find(character) != std::string_view::npos;
    return place == 'x' ? isDigit : character == place;
  };
  return uid.size() == form.size() && std::equal(uid.begin(), uid.end(), form.begin(), fits);
}

}  // namespace

DonationIdentifier::DonationIdentifier(std::string_view bundleIdentifier, const VCard& card,
                                       std::string_view file, const Pseudonyms& pseudonyms)
    : cardPrefix(escaped(bundleIdentifier) + ":") {
  if (card.uid.empty()) {
    cardPrefix += pseudonyms.of(file) + ":" + std::to_string(card.place) + ":";
  } else {
    cardPrefix += (isUUID(card.uid) ? escaped(card.uid) : pseudonyms.of(card.uid)) + ":";
  }
}

std::string DonationIdentifier::ofProperty(const char* kind) const { return cardPrefix + kind; }

std::string DonationIdentifier::ofEntry(const char* kind, std::size_t position) const {
  return cardPrefix + kind + ":" + std::to_string(position);
}

}  // namespace quenlet
