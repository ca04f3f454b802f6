#include <utility>

#include "donors/mail/MailIdentities.h"
#include "foreign/ForeignFiles.h"
#include "foreign/KeyFile.h"

namespace quenlet {

MailIdentities kmailIdentities(const UserPlaces& places) {
  const auto fail = [](const Error& error) {
    return MailIdentities::failure(ForeignFiles::locate("emailidentities", error));
  };
  const auto text = ForeignFiles::readLines(places.configuration / "emailidentities");
  if (!text.ok()) return fail(*text.error());
  if (!text.value()) return MailIdentities::success({});
  const Result<KeyFile> file = KeyFile::parse(*text.value());
  if (!file.ok()) return fail(*file.error());
  std::vector<MailIdentity> identities;
  for (const std::string& group : file.value().groups()) {
    if (!group.starts_with("Identity #")) continue;
    MailIdentity identity{group, file.value().text(group, "Name").value_or(""), {}};
    identity.mailboxes.push_back(file.value().text(group, "Email Address").value_or(""));
    for (std::string& alias : file.value().list(group, "Email Aliases", ',')) {
      identity.mailboxes.push_back(std::move(alias));
    }
    identities.push_back(std::move(identity));
  }
  return MailIdentities::success(std::move(identities));
}

}  // namespace quenlet
