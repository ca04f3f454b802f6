#include <utility>

#include "donors/mail/MailIdentities.h"
#include "foreign/ForeignFiles.h"
#include "foreign/KeyFile.h"

namespace quenlet {
namespace {

constexpr char accountGroup[] = "Account";

// Adds the identity of the account whose directory this is, if it is one.
ErrorPtr addAccount(const std::filesystem::path& directory, std::vector<MailIdentity>& identities) {
  const auto text = ForeignFiles::readLines(directory / "geary.ini");
  if (!text.ok()) return text.error();
  if (!text.value()) return nullptr;
  const Result<KeyFile> file = KeyFile::parse(*text.value());
  if (!file.ok()) return file.error();
  std::vector<std::string> senders = file.value().list(accountGroup, "sender_mailboxes", ';');
  if (senders.empty()) return damage("it has no account with a mailbox");
  const std::string first = senders.front();
  identities.push_back({directory.native(), first, std::move(senders)});
  return nullptr;
}

}  // namespace

MailIdentities gearyIdentities(const UserPlaces& places) {
  std::vector<MailIdentity> identities;
  for (const std::filesystem::path& directory :
       {places.configuration / "geary", places.home / ".var/app/org.gnome.Geary/config/geary"}) {
    const auto names = ForeignFiles::names(directory);
    if (!names.ok()) return MailIdentities::failure(ForeignFiles::locate("geary", *names.error()));
    std::size_t number = 0;
    for (const std::string& name : names.value()) {
      ++number;
      if (const ErrorPtr error = addAccount(directory / name, identities)) {
        return MailIdentities::failure(ForeignFiles::locate(
            "geary.ini in directory " + std::to_string(number) + " of geary", *error));
      }
    }
  }
  return MailIdentities::success(std::move(identities));
}

}  // namespace quenlet
