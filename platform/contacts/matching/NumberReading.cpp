#include "platform/contacts/matching/NumberReading.h"

#include <phonenumbers/phonenumberutil.h>

#include <algorithm>
#include <charconv>
#include <string>

namespace {

using Library = i18n::phonenumbers::PhoneNumberUtil;

std::uint64_t numberOfDigits(std::string text) {
  std::erase_if(text, [](char c) { return c < '0' || c > '9'; });
  std::uint64_t number = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
  return parsed.ec == std::errc() ? number : 0;
}

template <std::size_t Size>
bool copyText(const std::string& text, char (&place)[Size]) {
  if (text.size() >= Size) return false;
  std::copy(text.begin(), text.end(), place);
  place[text.size()] = 0;
  return true;
}

}  // namespace

int quenletReadNumber(const char* text, QuenletInternationalNumber* number) {
  const Library& library = *Library::GetInstance();
  i18n::phonenumbers::PhoneNumber parsed;
  if (library.Parse(text, "ZZ", &parsed) != Library::NO_PARSING_ERROR) return 0;
  std::string dialled;
  library.Format(parsed, Library::NATIONAL, &dialled);
  *number = {parsed.country_code(), parsed.national_number(), numberOfDigits(std::move(dialled))};
  return 1;
}

int quenletWriteNumber(const char* text, QuenletWrittenNumber* number) {
  const Library& library = *Library::GetInstance();
  i18n::phonenumbers::PhoneNumber parsed;
  if (library.Parse(text, "ZZ", &parsed) != Library::NO_PARSING_ERROR) return 0;
  std::string region, international, national;
  library.GetRegionCodeForNumber(parsed, &region);
  library.Format(parsed, Library::INTERNATIONAL, &international);
  library.Format(parsed, Library::NATIONAL, &national);
  number->countryCode = parsed.country_code();
  const bool fits = copyText(region, number->region) &&
                    copyText(international, number->international) &&
                    copyText(national, number->national);
  return fits ? 1 : 0;
}
