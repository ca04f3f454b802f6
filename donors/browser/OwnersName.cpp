#include "donors/browser/OwnersName.h"

#include <cerrno>

#include "foreign/LoginRecord.h"
#include "foreign/Mailbox.h"
#include "platform/contacts/VCardContactStore.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

bool isAbsent(const Error& error) {
  return error.domain() == ContactErrorDomain &&
         error.code() == static_cast<std::int64_t>(ContactErrorCode::noMeContact);
}

}  // namespace

Result<OwnersName> OwnersName::find(const UserPlaces& places) {
  using Found = Result<OwnersName>;
  const auto card = VCardContactStore(places.home / MeCardPath)
                        .readCard({ContactGivenNameKey, ContactFamilyNameKey});
  if (card.ok()) {
    const Contact& contact = card.value().contact;
    if (!contact.givenName().empty() && !contact.familyName().empty()) {
      return Found::success(OwnersName(std::optional(
          Name{.givenName = contact.givenName(), .familyName = contact.familyName()})));
    }
  } else if (!isAbsent(*card.error())) {
    return Found::failure(makeError(PosixErrorDomain, EINVAL, "the own card cannot be read"));
  }
  const Result<LoginRecord> user = LoginRecord::ofProcess();
  if (!user.ok()) return Found::failure(user.error());
  return Found::success(OwnersName(user.value().fullName));
}

OwnersName::OwnersName(std::string_view fullName) : OwnersName(quenlet::fullName(fullName)) {}

OwnersName::OwnersName(std::optional<Name> known) {
  if (!known) return;
  given = lowercased(known->givenName.value_or(""));
  family = lowercased(known->familyName.value_or(""));
}

bool OwnersName::isThatOf(const Name& name) const {
  if (given.empty() || family.empty()) return false;
  return canonicallyEqual(lowercased(name.givenName.value_or("")), given) &&
         canonicallyEqual(lowercased(name.familyName.value_or("")), family);
}

}  // namespace quenlet
