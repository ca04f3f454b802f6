#pragma once

#include <string>
#include <string_view>
#include <vector>

// Pure functions on e-mail addresses.
namespace quenlet {

// The normal form of one address: without surrounding blanks and a leading "mailto:", lower-cased.
[[nodiscard]] std::string EmailAddressNormalize(std::string_view address);

// The address as given, then the same mailbox under each alias of its domain (googlemail.com for
// gmail.com, and others that providers have made public). Text without an "@" has no other form.
[[nodiscard]] std::vector<std::string> EmailAddressExpandAliasedDomains(std::string_view address);

}  // namespace quenlet
