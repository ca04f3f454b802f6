#include "client/DonationIdentifier.h"

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

// Bytes that are not UTF-8 are escaped too: a file name may be any bytes.
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

}  // namespace

DonationIdentifier::DonationIdentifier(std::string_view bundleIdentifier, const VCard& card,
                                       std::string_view fileName)
    : cardPrefix(escaped(bundleIdentifier) + ":") {
  if (card.uid.empty()) {
    cardPrefix += escaped(fileName) + ":" + std::to_string(card.place) + ":";
  } else {
    cardPrefix += escaped(card.uid) + ":";
  }
}

std::string DonationIdentifier::ofProperty(const char* kind) const { return cardPrefix + kind; }

std::string DonationIdentifier::ofEntry(const char* kind, std::size_t position) const {
  return cardPrefix + kind + ":" + std::to_string(position);
}

}  // namespace quenlet
