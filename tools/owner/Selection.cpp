#include "tools/owner/Selection.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <optional>
#include <string>
#include <variant>

#include "platform/contacts/EmailAddress.h"
#include "platform/contacts/PhoneNumber.h"
#include "platform/contacts/PostalAddressFormatter.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

// The words of a text in lower case, with one blank between them. Commas and quotation marks, which
// are added where values are shown, count as blanks.
std::string wordsOf(std::string_view text) {
  constexpr std::string_view separators = " \t\r\n,\"";
  const std::string lower = lowercased(canonicalKey(text));
  std::string words;
  for (std::size_t begin = lower.find_first_not_of(separators); begin != std::string::npos;) {
    const std::size_t end = std::min(lower.find_first_of(separators, begin), lower.size());
    if (!words.empty()) words += ' ';
    words.append(lower, begin, end - begin);
    begin = lower.find_first_not_of(separators, end);
  }
  return words;
}

using Component = std::optional<std::string>;

std::string wordsOf(std::initializer_list<const Component*> components) {
  std::string text;
  for (const Component* component : components) text += component->value_or("") + ' ';
  return wordsOf(text);
}

std::string wordsOf(const PostalAddress& address, CountryName country) {
  return wordsOf(
      PostalAddressFormatter::singleLineStringFromPostalAddress(address, country).value_or(""));
}

// Whether the text names a value of that kind.
struct IsNamedBy final {
  std::string_view text;

  bool operator()(const PersonNameComponents& name) const {
    const std::string wanted = wordsOf(text);
    if (wanted.empty()) return false;
    const auto& [prefix, given, middle, family, suffix, nickname] = name;
    return wanted == wordsOf({&prefix, &given, &middle, &family, &suffix, &nickname}) ||
           wanted == wordsOf({&given, &middle, &family}) || wanted == wordsOf({&given, &family});
  }
  bool operator()(const Value::EmailAddress& email) const {
    const std::string wanted = EmailAddressNormalize(text);
    return !wanted.empty() && canonicallyEqual(wanted, EmailAddressNormalize(email.address));
  }
  bool operator()(const Value::PhoneNumber& phone) const {
    const auto wanted = PhoneNumber::withStringValue(text);
    const auto number = PhoneNumber::withStringValue(phone.number);
    return wanted && number && wanted->digits() == number->digits();
  }
  bool operator()(const Value::PostalAddress& postal) const {
    const std::string wanted = wordsOf(text);
    if (wanted.empty()) return false;
    return wanted == wordsOf(postal.address, CountryName::included) ||
           wanted == wordsOf(postal.address, CountryName::leftOut);
  }
  bool operator()(const Value::ImageData&) const { return false; }
};

template <typename IsMeant>
std::vector<std::size_t> placesWhere(const DonationValues& list, IsMeant isMeant) {
  std::vector<std::size_t> places;
  for (std::size_t place = 0; place < list.size(); ++place) {
    if (isMeant(*list[place])) places.push_back(place);
  }
  return places;
}

}  // namespace

Selection select(const DonationValues& list, std::string_view text) {
  auto identified = placesWhere(list, [text](const DonationValue& donation) {
    return canonicallyEqual(donation.decoded().origin.donationIdentifier, text);
  });
  if (!identified.empty()) return {SelectedBy::identifier, std::move(identified)};
  const std::size_t number = placeNumber(text);
  if (number >= 1 && number <= list.size()) return {SelectedBy::number, {number - 1}};
  return {SelectedBy::value, placesWhere(list, [text](const DonationValue& donation) {
            return isValueNamed(donation.value(), text);
          })};
}

bool isValueNamed(const Value& value, std::string_view text) {
  return std::visit(IsNamedBy{text}, value.cases());
}

std::size_t placeNumber(std::string_view text) {
  std::size_t number = 0;
  const char* end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, number);
  return parsed.ec == std::errc() && parsed.ptr == end ? number : 0;
}

}  // namespace quenlet
