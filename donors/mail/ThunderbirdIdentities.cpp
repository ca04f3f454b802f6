#include <cerrno>
#include <set>
#include <string_view>
#include <utility>

#include "donors/mail/MailIdentities.h"
#include "donors/mail/PreferenceScript.h"
#include "foreign/ForeignFiles.h"
#include "foreign/Mailbox.h"
#include "foreign/MozillaProfiles.h"

namespace quenlet {
namespace {

ErrorPtr damage(const char* sentence) { return makeError(PosixErrorDomain, EINVAL, sentence); }

// Whether an account is described that no list names: the list has been lost.
bool hasLostAccounts(const PreferenceScript& preferences) {
  for (const std::string& name : preferences.namesBelow("mail.account.")) {
    if (name.ends_with(".identities")) return true;
  }
  return false;
}

// Adds the identities that the accounts of one profile have, each once.
ErrorPtr addIdentities(const std::filesystem::path& profile, const PreferenceScript& preferences,
                       std::vector<MailIdentity>& identities) {
  const auto accounts = preferences.text("mail.accountmanager.accounts");
  if (!accounts) {
    return hasLostAccounts(preferences) ? damage("it has accounts and no list of them") : nullptr;
  }
  std::set<std::string> seenAccounts;
  std::set<std::string> seen;
  for (const std::string& account : splitMailboxes(*accounts)) {
    if (!seenAccounts.insert(account).second) continue;
    const auto list = preferences.text("mail.account." + account + ".identities");
    for (const std::string& identity : splitMailboxes(list.value_or(""))) {
      const std::string branch = "mail.identity." + identity + ".";
      if (!seen.insert(identity).second) continue;
      if (preferences.namesBelow(branch).empty()) {
        return damage("an account has an identity that is not there");
      }
      identities.push_back({profile.native() + "\n" + identity,
                            preferences.text(branch + "fullName").value_or(""),
                            {preferences.text(branch + "useremail").value_or("")}});
    }
  }
  return nullptr;
}

}  // namespace

MailIdentities thunderbirdIdentities(const UserPlaces& places) {
  const auto profiles = MozillaProfiles::in(
      {places.home / ".thunderbird", places.home / "snap/thunderbird/common/.thunderbird",
       places.home / ".var/app/org.mozilla.Thunderbird/.thunderbird"});
  if (!profiles.ok()) return MailIdentities::failure(profiles.error());
  std::vector<MailIdentity> identities;
  std::size_t number = 0;
  for (const std::filesystem::path& profile : profiles.value()) {
    ++number;
    const auto text = ForeignFiles::readLines(profile / "prefs.js");
    ErrorPtr error = text.ok() ? nullptr : text.error();
    if (text.ok() && text.value()) {
      error = addIdentities(profile, PreferenceScript::parse(*text.value()), identities);
    }
    if (error) {
      return MailIdentities::failure(
          ForeignFiles::locate("prefs.js of profile " + std::to_string(number), *error));
    }
  }
  return MailIdentities::success(std::move(identities));
}

}  // namespace quenlet
