#include <set>
#include <utility>

#include "donors/mail/MailIdentities.h"
#include "foreign/ForeignFiles.h"
#include "foreign/KeyFile.h"

namespace quenlet {
namespace {

// One identity; its number stays the same wherever it stands in the file.
MailIdentity identityIn(const KeyFile& file, const std::string& group, const std::string& number) {
  MailIdentity identity{number, file.text(group, "Name").value_or(""), {}};
  identity.mailboxes.push_back(file.text(group, "Email Address").value_or(""));
  for (std::string& alias : file.list(group, "Email Aliases", ',')) {
    identity.mailboxes.push_back(std::move(alias));
  }
  return identity;
}

// KMail has one identity at least, writes a number into each, behind all else that is read here,
// and says which of them it uses by default.
MailIdentities identitiesIn(const KeyFile& file) {
  std::vector<MailIdentity> identities;
  std::set<std::string> numbers;
  for (const std::string& group : file.groups()) {
    if (!group.starts_with("Identity #")) continue;
    const std::string number = file.text(group, "uoid").value_or("");
    if (number.empty()) return MailIdentities::failure(damage("an identity has no number"));
    if (!numbers.insert(number).second) {
      return MailIdentities::failure(damage("two identities have one number"));
    }
    identities.push_back(identityIn(file, group, number));
  }
  if (identities.empty()) return MailIdentities::failure(damage("it has no identity"));
  if (!numbers.contains(file.text("General", "Default Identity").value_or(""))) {
    return MailIdentities::failure(damage("its default identity is not there"));
  }
  return MailIdentities::success(std::move(identities));
}

}  // namespace

MailIdentities kmailIdentities(const UserPlaces& places) {
  const auto fail = [](const Error& error) {
    return MailIdentities::failure(ForeignFiles::locate("emailidentities", error));
  };
  const auto text = ForeignFiles::readLines(places.configuration / "emailidentities");
  if (!text.ok()) return fail(*text.error());
  if (!text.value()) return MailIdentities::success({});
  const Result<KeyFile> file = KeyFile::parse(*text.value());
  if (!file.ok()) return fail(*file.error());
  MailIdentities identities = identitiesIn(file.value());
  return identities.ok() ? std::move(identities) : fail(*identities.error());
}

}  // namespace quenlet
