#include "platform/contacts/PostalAddressFormatter.h"

#include <string_view>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

void appendPart(std::string& line, std::string_view part) {
  part = trimmed(part);
  if (part.empty()) return;
  if (!line.empty()) line += ", ";
  line += part;
}

void appendLines(std::string& line, std::string_view text) {
  while (true) {
    const std::size_t end = text.find_first_of("\r\n");
    appendPart(line, text.substr(0, end));
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

}  // namespace

std::optional<std::string> PostalAddressFormatter::singleLineStringFromPostalAddress(
    const PostalAddress& address, CountryName addCountryName) {
  std::string line;
  for (const std::string* part :
       {&address.street, &address.subLocality, &address.city, &address.subAdministrativeArea,
        &address.state, &address.postalCode}) {
    appendLines(line, *part);
  }
  if (addCountryName == CountryName::included) appendLines(line, address.country);
  if (line.empty()) return std::nullopt;
  // Addresses that compare equal may differ in the composition of their characters.
  return canonicalKey(line);
}

}  // namespace quenlet
