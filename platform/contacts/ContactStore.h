#pragma once

#include <memory>
#include <vector>

#include "platform/contacts/Contact.h"
#include "platform/contacts/KeyDescriptor.h"
#include "quenlet/Result.h"

namespace quenlet {

inline constexpr char LabelHome[] = "home";
inline constexpr char LabelPhoneNumberDevice[] = "device";
// The contact under which feedback on the owner's values is kept.
inline constexpr char MeCardContactIdentifier[] = "ovaro.quenlet.me-card";
inline constexpr char ContactErrorDomain[] = "ovaro.quenlet.contact-error";
enum class ContactErrorCode {
  noMeContact = 1,
  invalidCard = 2,
  // A card of an unknown version.
  unsupportedVersion = 3,
  // The card of an organisation, a group or a place.
  notAPerson = 4,
};

// A connection to the owner's contact database.
class ContactStore {
 public:
  virtual ~ContactStore() = default;
  // The me contact with only the requested fields, read now, on the calling thread. An error when
  // there is none, or it cannot be read.
  [[nodiscard]] virtual Result<std::shared_ptr<const Contact>>
  _crossPlatformUnifiedMeContactWithKeysToFetch(const std::vector<KeyDescriptor>& keys) = 0;
};

}  // namespace quenlet
