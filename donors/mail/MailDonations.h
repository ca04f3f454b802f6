#pragma once

#include <string>

#include "donors/mail/MailIdentities.h"
#include "donors/source/SourceDonor.h"

namespace quenlet {

// The names and addresses of a mail program's identities. An identity is a cluster. Identifiers
// count addresses by their place, left-out ones included.
[[nodiscard]] SourceDonor::Donations mailDonations(const std::string& bundleIdentifier,
                                                   const MailIdentities& identities);

// The main() of the program that donates what `identities` finds for the user of the process.
[[nodiscard]] int runMailDonor(const char* bundleIdentifier,
                               MailIdentities (*identities)(const UserPlaces& places));

}  // namespace quenlet
