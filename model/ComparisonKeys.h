#pragma once

#include <optional>
#include <string>

#include "platform/contacts/PersonNameComponents.h"

namespace quenlet {

// What two names are compared by when it matters whether they are the same person's: given and
// family name, lower-cased, in canonical form. An absent name equals only an absent one. A value
// type.
struct NameKey final {
  std::optional<std::string> givenName;
  std::optional<std::string> familyName;

  [[nodiscard]] static NameKey keyForName(const PersonNameComponents& name);
  friend bool operator==(const NameKey&, const NameKey&) = default;
};

// The texts of one donation in the forms in which they are compared, made once with the record, so
// that looking for equals is a comparison of bytes.
struct ComparisonKeys final {
  std::string bundleIdentifier;
  std::string donationIdentifier;
  std::string clusterIdentifier;  // empty for none
  // By which the donated card finds duplicates of an entry; nothing for names, images and addresses
  // without text.
  std::optional<std::string> entry;
  // By which the curated card's addresses are left out: an e-mail address as it was donated.
  std::string emailAddress;
  NameKey name;
};

}  // namespace quenlet
