#pragma once

#include <string_view>

#include "platform/contacts/PersonNameComponents.h"
#include "platform/contacts/PostalAddress.h"
#include "platform/foundation/KeyedHash.h"

namespace quenlet {

// Fingerprints by which values are found and compared, so that searches among many records read no
// texts. Two texts have one key when they are canonically equivalent. Stateless.
class DonationKeys final {
 public:
  DonationKeys() = delete;

  [[nodiscard]] static Fingerprint ofText(std::string_view text);
  // The same in any letter case.
  [[nodiscard]] static Fingerprint ofFoldedText(std::string_view text);
  // Equal for addresses that are one entry on a card: one line without the country, in any letter
  // case. None for an address without text.
  [[nodiscard]] static Fingerprint ofPostalAddress(const PostalAddress& address);
};

// Decides whether two names can be the same person's: given and family names are equal in any
// letter case, and an absent name equals only an absent one. Nothing else counts. Stateless.
class SuppressionNameEquivalence final {
 public:
  SuppressionNameEquivalence() = delete;

  // Equal for equivalent names: records keep it, and comparisons go by it.
  [[nodiscard]] static Fingerprint keyOf(const PersonNameComponents& name);
  [[nodiscard]] static bool areEquivalent(const PersonNameComponents& a,
                                          const PersonNameComponents& b) {
    return keyOf(a) == keyOf(b);
  }
};

}  // namespace quenlet
