#pragma once

#include <cerrno>
#include <string>
#include <vector>

#include "foreign/UserPlaces.h"
#include "quenlet/Result.h"

// Under which names and addresses the owner writes mail, as mail programs keep it. Files that do
// not exist hold no identities. If one is damaged or cannot be read, its identities are unknown and
// so are all of that program: the error names no file, and quotes nothing. Stateless.
namespace quenlet {

struct MailIdentity final {
  // Stays the same while the program keeps the identity, and is unique among its own. May hold
  // personal values.
  std::string key;
  std::string name;  // as typed, perhaps empty
  std::vector<std::string>
      mailboxes;  // as typed: addresses, perhaps with names; the main one first
  friend bool operator==(const MailIdentity&, const MailIdentity&) = default;
};

using MailIdentities = Result<std::vector<MailIdentity>>;

// The error for a file that was read and is not as its program writes it.
[[nodiscard]] inline ErrorPtr damage(const char* sentence) {
  return makeError(PosixErrorDomain, EINVAL, sentence);
}

// Evolution and others that use its server: evolution/sources/*.source. Without sources that are
// switched off, and those of GNOME Online Accounts.
[[nodiscard]] MailIdentities evolutionIdentities(const UserPlaces& places);
// The profiles in the directories of Thunderbird, its snap and its Flatpak. Only identities that an
// account has.
[[nodiscard]] MailIdentities thunderbirdIdentities(const UserPlaces& places);
// KMail and others of KDE's: emailidentities.
[[nodiscard]] MailIdentities kmailIdentities(const UserPlaces& places);
// geary/*/geary.ini, and the same in Geary's Flatpak.
[[nodiscard]] MailIdentities gearyIdentities(const UserPlaces& places);

}  // namespace quenlet
