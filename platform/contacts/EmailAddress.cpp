#include "platform/contacts/EmailAddress.h"

#include <algorithm>
#include <array>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

// Domains that deliver to the same mailbox, one row per provider. Unused places are empty.
using AliasedDomains = std::array<std::string_view, 6>;
constexpr std::array<AliasedDomains, 3> aliasTable = {{
    {"gmail.com", "googlemail.com"},
    {"proton.me", "protonmail.com", "protonmail.ch", "pm.me"},
    {"yandex.ru", "yandex.com", "yandex.by", "yandex.kz", "ya.ru"},
}};

std::string_view withoutScheme(std::string_view address) {
  constexpr std::string_view scheme = "mailto:";
  if (lowercased(address.substr(0, scheme.size())) != scheme) return address;
  return address.substr(scheme.size());
}

}  // namespace

std::string EmailAddressNormalize(std::string_view address) {
  std::string_view rest = trimmed(address);
  // Repeated ("mailto: mailto:ann@…"), so that normalizing twice changes nothing.
  for (std::string_view shorter = trimmed(withoutScheme(rest)); shorter.size() < rest.size();
       shorter = trimmed(withoutScheme(rest))) {
    rest = shorter;
  }
  return lowercased(rest);
}

std::vector<std::string> EmailAddressExpandAliasedDomains(std::string_view address) {
  std::vector<std::string> expansion{std::string(address)};
  const std::size_t at = address.rfind('@');
  if (at == std::string_view::npos) return expansion;
  const std::string domain = lowercased(trimmed(address.substr(at + 1)));
  if (domain.empty()) return expansion;
  for (const AliasedDomains& aliases : aliasTable) {
    if (std::find(aliases.begin(), aliases.end(), domain) == aliases.end()) continue;
    for (const std::string_view alias : aliases) {
      if (alias.empty() || alias == domain) continue;
      expansion.push_back(std::string(address.substr(0, at + 1)).append(alias));
    }
  }
  return expansion;
}

}  // namespace quenlet
