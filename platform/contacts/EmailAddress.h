#pragma once

#include <string>
#include <string_view>
#include <vector>

// Pure functions on e-mail addresses.
namespace quenlet {

// The normal form of one address: surrounding blanks and a leading "mailto:" dropped, lower-cased.
[[nodiscard]] std::string EmailAddressNormalize(std::string_view address);

// The same mailbox under every domain that is an alias of the address's domain (googlemail.com and
// gmail.com, and further public facts); the address itself, as given, comes first. Text without an
// "@" has no other form.
[[nodiscard]] std::vector<std::string> EmailAddressExpandAliasedDomains(std::string_view address);

}  // namespace quenlet
