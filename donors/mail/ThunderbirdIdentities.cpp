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

// Whether an account is described that no list names: the list has been lost.
bool hasLostAccounts(const PreferenceScript& preferences) {
  for (const std::string& name : preferences.namesBelow("mail.account.")) {
    if (name.ends_with(".identities")) return true;
  }
  return false;
}

// Adds an account's identities, each once. What Thunderbird always writes of an account and of an
// identity has to be there.
ErrorPtr addIdentitiesOf(const std::string& account, const std::filesystem::path& profile,
                         const PreferenceScript& preferences, std::set<std::string>& seen,
                         std::vector<MailIdentity>& identities) {
  const std::string accountBranch = "mail.account." + account + ".";
  if (!preferences.text(accountBranch + "server")) {
    return damage("it lists an account that is not there");
  }
  const auto list = preferences.text(accountBranch + "identities");
  for (const std::string& identity : splitMailboxes(list.value_or(""))) {
    if (!seen.insert(identity).second) continue;
    const std::string branch = "mail.identity." + identity + ".";
    const auto address = preferences.text(branch + "useremail");
    if (!address) return damage("an account has an identity without an address");
    identities.push_back({profile.native() + "\n" + identity,
                          preferences.text(branch + "fullName").value_or(""),
                          {*address}});
  }
  return nullptr;
}

// Adds the identities that the accounts of one profile have.
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
    if (ErrorPtr error = addIdentitiesOf(account, profile, preferences, seen, identities)) {
      return error;
    }
  }
  return nullptr;
}

// Adds those of a profile; none when it has no preferences yet.
ErrorPtr addProfile(const std::filesystem::path& profile, std::vector<MailIdentity>& identities) {
  const auto text = ForeignFiles::readLines(profile / "prefs.js");
  if (!text.ok()) return text.error();
  if (!text.value()) return nullptr;
  const auto preferences = PreferenceScript::parse(*text.value());
  return preferences.ok() ? addIdentities(profile, preferences.value(), identities)
                          : preferences.error();
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
    if (const ErrorPtr error = addProfile(profile, identities)) {
      return MailIdentities::failure(
          ForeignFiles::locate("prefs.js of profile " + std::to_string(number), *error));
    }
  }
  return MailIdentities::success(std::move(identities));
}

}  // namespace quenlet
