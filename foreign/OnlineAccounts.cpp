#include "foreign/OnlineAccounts.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "foreign/ForeignFiles.h"
#include "foreign/KeyFile.h"
#include "foreign/Mailbox.h"

namespace quenlet {
namespace {

constexpr std::string_view groupPrefix = "Account ";
constexpr std::string_view identifierPrefix = "gnome-";
constexpr std::string_view typePrefix = "org.gnome.OnlineAccounts.";
// Those of the daemon's are shorter.
constexpr std::size_t longestWord = 100;

// Where a provider's accounts keep whether their mail is on, and the address that the daemon then
// offers on the bus.
struct MailKeys final {
  std::string_view provider;
  const char* isOn;
  const char* address;
};
constexpr std::array<MailKeys, 4> mailKeys = {
    {{"imap_smtp", "Enabled", "EmailAddress"},
     {"google", "MailEnabled", "Identity"},
     {"exchange", "MailEnabled", "PresentationIdentity"},
     {"windows_live", "MailEnabled", "PresentationIdentity"}}};
constexpr std::array<std::pair<const char*, const char*>, 3> furtherClasses = {
    {{"CalendarEnabled", "calendars"}, {"ContactsEnabled", "contacts"}, {"FilesEnabled", "files"}}};

ErrorPtr damage(const char* sentence) { return makeError(PosixErrorDomain, EINVAL, sentence); }

// For identifiers, which name files and are logged.
bool isWord(std::string_view text) {
  return !text.empty() && text.size() <= longestWord &&
         std::all_of(text.begin(), text.end(), [](char c) {
           return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                  c == '_' || c == '-';
         });
}

// A name that is neither an address nor a login name.
std::optional<std::string> nameOf(const KeyFile& file, const std::string& group) {
  auto name = file.text(group, "Name");
  if (!name || !fullName(*name)) return std::nullopt;
  return name->find(' ') != name->npos && name->find('@') == name->npos ? name : std::nullopt;
}

const MailKeys* mailKeysOf(std::string_view provider) {
  const auto keys = std::find_if(mailKeys.begin(), mailKeys.end(),
                                 [&](const MailKeys& each) { return each.provider == provider; });
  return keys == mailKeys.end() ? nullptr : &*keys;
}

// One account; nothing when it does not count. What the daemon always writes has to be there:
// without it the file is not whole.
Result<std::optional<Account>> accountOf(const KeyFile& file, const std::string& group) {
  using Read = Result<std::optional<Account>>;
  const std::string name = group.substr(groupPrefix.size());
  const std::string provider = file.text(group, "Provider").value_or("");
  if (!isWord(name) || !isWord(provider)) {
    return Read::failure(damage("an account has no usable identifier or provider"));
  }
  const MailKeys* mail = mailKeysOf(provider);
  // The daemon keeps a name for imap_smtp only.
  const bool hasName = provider != "imap_smtp" || file.text(group, "Name");
  const bool isWhole = hasName && file.text(group, "Identity") &&
                       file.text(group, "PresentationIdentity") &&
                       (!mail || (file.text(group, mail->isOn) && file.text(group, mail->address)));
  if (!isWhole) return Read::failure(damage("an account lacks what all of its kind have"));
  if (!mail || !file.isTrue(group, mail->isOn)) return Read::success(std::nullopt);
  Account account{.identifier = std::string(identifierPrefix) + name,
                  .accountType = AccountType{std::string(typePrefix) + provider},
                  .username = personalAddress(*file.text(group, mail->address)),
                  .isActive = true,
                  .enabledDataclasses = {"mail"}};
  if (!account.username) return Read::success(std::nullopt);
  for (const auto& [key, dataClass] : furtherClasses) {
    if (file.isTrue(group, key)) account.enabledDataclasses.insert(dataClass);
  }
  if (auto fullUserName = nameOf(file, group)) {
    account.properties.emplace("FullUserName", *std::move(fullUserName));
  }
  return Read::success(std::move(account));
}

}  // namespace

Result<std::optional<OnlineAccounts::Accounts>> OnlineAccounts::read(const UserPlaces& places) {
  using Read = Result<std::optional<Accounts>>;
  const std::filesystem::path directory = places.configuration / "goa-1.0";
  const auto fail = [](const Error& error) {
    return Read::failure(ForeignFiles::locate("goa-1.0/accounts.conf", error));
  };
  const auto text = ForeignFiles::read(directory / "accounts.conf");
  if (!text.ok()) return fail(*text.error());
  if (!text.value()) {
    std::error_code failure;
    const bool isThere = std::filesystem::is_directory(directory, failure);
    return Read::success(isThere ? std::optional(Accounts()) : std::nullopt);
  }
  if (const ErrorPtr problem = ForeignFiles::problemOfLines(*text.value())) return fail(*problem);
  Result<Accounts> accounts = parse(*text.value());
  if (!accounts.ok()) return fail(*accounts.error());
  return Read::success(std::move(accounts).takeValue());
}

Result<OnlineAccounts::Accounts> OnlineAccounts::parse(std::string_view text) {
  using Read = Result<Accounts>;
  const Result<KeyFile> file = KeyFile::parse(text);
  if (!file.ok()) return Read::failure(file.error());
  Accounts accounts;
  for (const std::string& group : file.value().groups()) {
    if (!group.starts_with(groupPrefix)) continue;
    Result<std::optional<Account>> account = accountOf(file.value(), group);
    if (!account.ok()) return Read::failure(account.error());
    if (account.value()) accounts.push_back(*std::move(account).takeValue());
  }
  return Read::success(std::move(accounts));
}

bool OnlineAccounts::isIdentifier(std::string_view text) {
  return text.starts_with(identifierPrefix);
}

Account OnlineAccounts::named(const std::string& identifier) {
  return {.identifier = identifier, .accountType = AccountType{std::string(typePrefix)}};
}

bool OnlineAccounts::isOne(const Account& account) {
  return isIdentifier(account.identifier) && account.accountType &&
         account.accountType->identifier.value_or("").starts_with(typePrefix);
}

}  // namespace quenlet
