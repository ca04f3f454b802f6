#include "platform/contacts/matching/NumberMatch.h"

#include <phonenumbers/phonenumberutil.h>

int quenletNumberMatch(const char* first, const char* second) {
  using Library = i18n::phonenumbers::PhoneNumberUtil;
  switch (Library::GetInstance()->IsNumberMatchWithTwoStrings(first, second)) {
    case Library::EXACT_MATCH:
    case Library::NSN_MATCH:
    case Library::SHORT_NSN_MATCH:
      return 1;
    case Library::INVALID_NUMBER:
    case Library::NO_MATCH:
      break;
  }
  return 0;
}
