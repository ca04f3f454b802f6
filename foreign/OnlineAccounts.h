#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foreign/UserPlaces.h"
#include "platform/accounts/Account.h"
#include "quenlet/Result.h"

namespace quenlet {

// The mail accounts among GNOME's online accounts, as accounts of the owner's account store. They
// are read from goa-1.0/accounts.conf, which GNOME's daemon replaces as a whole at each change; the
// daemon is not asked. The file holds no secrets. Stateless.
//
//   [Account account_1690000000_0]            identifier "gnome-account_1690000000_0"
//   Provider=imap_smtp                        type "org.gnome.OnlineAccounts.imap_smtp"
//   Identity=…  PresentationIdentity=…        names that the account goes by
//   Enabled=true  EmailAddress=…  Name=…      of other providers: MailEnabled, CalendarEnabled, …
//
// An account counts while its mail is switched on and it has an address of its owner's. That is the
// one that the daemon offers on the bus: for most providers it is among the names, and where it is
// not known to be, no name is taken for an address.
class OnlineAccounts final {
 public:
  using Accounts = std::vector<Account>;

  OnlineAccounts() = delete;

  // Nothing when GNOME keeps no accounts for this user, not even none. An error, which quotes
  // nothing, when the file cannot be read, is cut short or damaged.
  [[nodiscard]] static Result<std::optional<Accounts>> read(const UserPlaces& places);
  [[nodiscard]] static Result<Accounts> parse(std::string_view text);
  // Whether one of these could be called so.
  [[nodiscard]] static bool isIdentifier(std::string_view text);
  // One of which no more is known.
  [[nodiscard]] static Account named(const std::string& identifier);
  // Whether it is one of these, and not somebody's own that only has such an identifier or type.
  [[nodiscard]] static bool isOne(const Account& account);
};

}  // namespace quenlet
