#include "platform/accounts/PropertyListAccountStore.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <system_error>
#include <utility>

#include "platform/files/DurableDirectory.h"
#include "platform/files/FileReading.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

using std::filesystem::path;

constexpr std::string_view fileSuffix = ".plist";
constexpr char lockName[] = ".lock";

bool isAccountFile(const std::string& name) {
  return name.size() > fileSuffix.size() && name.ends_with(fileSuffix) && !name.starts_with('.');
}

std::string identifierOf(const path& file) {
  std::string name = file.filename().string();
  name.resize(name.size() - fileSuffix.size());
  return name;
}

// A dangling link is a problem to report; a file that has just been removed is not.
bool isLink(const path& file) {
  std::error_code failure;
  return std::filesystem::is_symlink(file, failure);
}

ErrorPtr unknownAccount() {
  return makeAccountError(AccountErrorCode::unknownAccount,
                          "there is no account with this identifier");
}

bool hasCode(const Error& error, AccountErrorCode code) {
  return error.domain() == AccountErrorDomain && error.code() == static_cast<std::int64_t>(code);
}

// The number of values in an object, counting itself.
std::size_t countOfValues(const PropertyList& object) {
  std::size_t count = 1;
  if (const PropertyListArray* elements = object.array()) {
    for (const PropertyList& element : *elements) count += countOfValues(element);
  } else if (const PropertyListDictionary* entries = object.dictionary()) {
    for (const auto& entry : *entries) count += countOfValues(entry.second);
  }
  return count;
}

// The account files of a directory, sorted; none when it is missing.
Result<std::vector<path>> accountFilesIn(const path& directory) {
  std::vector<path> files;
  std::error_code failure;
  std::filesystem::directory_iterator entries(directory, failure);
  for (; !failure && entries != std::filesystem::directory_iterator(); entries.increment(failure)) {
    if (isAccountFile(entries->path().filename().string())) files.push_back(entries->path());
  }
  if (failure && failure != std::errc::no_such_file_or_directory) {
    return Result<std::vector<path>>::failure(
        makePosixError(failure.value(), "list " + directory.filename().string()));
  }
  std::sort(files.begin(), files.end(),
            [](const path& a, const path& b) { return a.native() < b.native(); });
  return Result<std::vector<path>>::success(std::move(files));
}

Result<std::string> bytesOf(PropertyListDictionary entries, const path& file) {
  Result<std::string> bytes = PropertyListSerializer::dataWithObject(std::move(entries));
  if (!bytes.ok() || bytes.value().size() <= PropertyListAccountStore::maximumFileSizeInBytes) {
    return bytes;
  }
  return Result<std::string>::failure(makePosixError(EFBIG, "write " + file.filename().string()));
}

}  // namespace

ErrorPtr makeAccountError(AccountErrorCode code, std::string sentence) {
  return makeError(AccountErrorDomain, static_cast<std::int64_t>(code), std::move(sentence));
}

PropertyListAccountStore::PropertyListAccountStore(path directory,
                                                   std::shared_ptr<DataProxy> dataProxy,
                                                   std::shared_ptr<AccountFileProblems> problems)
    : directory(std::move(directory)),
      dataProxy(std::move(dataProxy)),
      problems(std::move(problems)) {}

Result<std::vector<AccountPtr>> PropertyListAccountStore::accounts() {
  using Accounts = Result<std::vector<AccountPtr>>;
  std::vector<AccountPtr> accounts;
  std::map<std::string, ErrorPtr> found;
  const Result<std::vector<path>> files = accountFilesIn(directory);
  if (!files.ok()) {
    problems->setProblems({{directory.filename().string(), files.error()}});
    return Accounts::failure(files.error());
  }
  for (const path& file : files.value()) {
    const Result<AccountPtr> account = accountOfFile(file);
    if (account.ok()) {
      accounts.push_back(account.value());
    } else if (!isMissingFile(*account.error()) || isLink(file)) {
      found.emplace(file.filename().string(), account.error());
    }
  }
  problems->setProblems(found);
  return Accounts::success(std::move(accounts));
}

Result<AccountPtr> PropertyListAccountStore::accountWithIdentifier(const std::string& identifier) {
  if (ErrorPtr error = problemOfIdentifier(identifier)) return Result<AccountPtr>::failure(error);
  Result<AccountPtr> account = accountOfFile(fileOf(identifier));
  if (account.ok() || !isMissingFile(*account.error())) return account;
  return Result<AccountPtr>::failure(unknownAccount());
}

ErrorPtr PropertyListAccountStore::save(const Account& account) {
  if (ErrorPtr error = problemOfAccount(account)) return error;
  const path file = fileOf(account.identifier);
  PropertyListDictionary entries = account.propertyListRepresentation();
  // merge() keeps the account's own entries where both have a key.
  entries.merge(foreignEntriesOf(file));
  Result<std::string> bytes = bytesOf(std::move(entries), file);
  if (!bytes.ok()) return bytes.error();
  const Future<bool> written =
      dataProxy->writeData(std::move(bytes).takeValue(), file, WritingOptions::atomic);
  const Result<bool>& outcome = written.result();
  return outcome.ok() ? nullptr : outcome.error();
}

ErrorPtr PropertyListAccountStore::remove(const std::string& identifier) {
  if (ErrorPtr error = problemOfIdentifier(identifier)) return error;
  const path file = fileOf(identifier);
  if (::unlink(file.c_str()) != 0) {
    if (errno == ENOENT) return unknownAccount();
    return makePosixError(errno, "remove " + file.filename().string());
  }
  // Else a power failure could bring the account back.
  PosixFileOperations operations;
  const int failure = DurableDirectory::synchronize(operations, directory);
  return failure == 0 ? nullptr : makePosixError(failure, "remove " + file.filename().string());
}

Result<std::vector<std::string>> PropertyListAccountStore::damagedAccounts() const {
  using Identifiers = Result<std::vector<std::string>>;
  const Result<std::vector<path>> files = accountFilesIn(directory);
  if (!files.ok()) return Identifiers::failure(files.error());
  std::vector<std::string> damaged;
  for (const path& file : files.value()) {
    const Result<Account> account = readAccount(file);
    if (!account.ok() && isDamage(*account.error())) damaged.push_back(identifierOf(file));
  }
  return Identifiers::success(std::move(damaged));
}

ErrorPtr PropertyListAccountStore::removeDamaged(const std::string& identifier) {
  if (ErrorPtr error = problemOfIdentifier(identifier)) return error;
  const path file = fileOf(identifier);
  if (!dataProxy->keepDamagedFile(file)) {
    return makePosixError(EIO, "keep a copy of " + file.filename().string());
  }
  return remove(identifier);
}

Result<std::shared_ptr<LockFile>> PropertyListAccountStore::lock() {
  PosixFileOperations operations;
  if (const int failure = DurableDirectory::ensure(operations, directory)) {
    return Result<std::shared_ptr<LockFile>>::failure(
        makePosixError(failure, "create " + directory.filename().string()));
  }
  return LockFile::lock(directory / lockName);
}

bool PropertyListAccountStore::isUnknown(const Error& error) {
  return hasCode(error, AccountErrorCode::unknownAccount);
}

bool PropertyListAccountStore::isDamage(const Error& error) {
  return error.domain() == PropertyListErrorDomain ||
         hasCode(error, AccountErrorCode::damagedAccount);
}

ErrorPtr PropertyListAccountStore::problemOfIdentifier(const std::string& identifier) {
  const bool isUsable = !identifier.empty() && identifier.size() <= maximumIdentifierSizeInBytes &&
                        identifier.front() != '.' && isValidUTF8(identifier) &&
                        std::none_of(identifier.begin(), identifier.end(), [](char c) {
                          return c == '/' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
                        });
  if (isUsable) return nullptr;
  return makeAccountError(
      AccountErrorCode::unusableIdentifier,
      "an account's identifier has 1 to " + std::to_string(maximumIdentifierSizeInBytes) +
          " bytes of UTF-8, no slashes or control characters, and no dot in front");
}

ErrorPtr PropertyListAccountStore::problemOfAccount(const Account& account) {
  if (ErrorPtr error = problemOfIdentifier(account.identifier)) return error;
  PropertyListDictionary entries = account.propertyListRepresentation();
  if (countOfValues(entries) > Account::maximumValues) {
    return makeAccountError(
        AccountErrorCode::tooManyValues,
        "an account has " + std::to_string(Account::maximumValues) + " values at most");
  }
  const auto bytes = bytesOf(std::move(entries), account.identifier + std::string(fileSuffix));
  return bytes.ok() ? nullptr : bytes.error();
}

path PropertyListAccountStore::fileOf(const std::string& identifier) const {
  return directory / (identifier + std::string(fileSuffix));
}

Result<PropertyListDictionary> PropertyListAccountStore::entriesOf(const path& file) const {
  using Entries = Result<PropertyListDictionary>;
  const Result<std::string> bytes = readFileOfAtMost(maximumFileSizeInBytes, file, *dataProxy);
  if (!bytes.ok()) return Entries::failure(bytes.error());
  const Result<PropertyList> object = PropertyListSerializer::objectWithData(bytes.value());
  if (!object.ok()) return Entries::failure(object.error());
  if (const auto* entries = object.value().dictionary()) return Entries::success(*entries);
  return Entries::failure(makeAccountError(AccountErrorCode::damagedAccount,
                                           "the top level of the file is not a dictionary"));
}

PropertyListDictionary PropertyListAccountStore::foreignEntriesOf(const path& file) const {
  const Result<PropertyListDictionary> reading = entriesOf(file);
  PropertyListDictionary entries;
  if (reading.ok()) entries = reading.value();
  if (const auto account = Account::initWithPropertyListRepresentation(entries)) {
    for (const auto& known : account->propertyListRepresentation()) entries.erase(known.first);
    return entries;
  }
  if (reading.ok() || !isMissingFile(*reading.error())) dataProxy->keepDamagedFile(file);
  return {};
}

Result<Account> PropertyListAccountStore::readAccount(const path& file) const {
  using Read = Result<Account>;
  // First: the other errors quote the file's name, which may be any bytes.
  if (ErrorPtr error = problemOfIdentifier(identifierOf(file))) return Read::failure(error);
  const Result<PropertyListDictionary> entries = entriesOf(file);
  if (!entries.ok()) return Read::failure(entries.error());
  auto account = Account::initWithPropertyListRepresentation(entries.value());
  if (!account) {
    return Read::failure(makeAccountError(AccountErrorCode::damagedAccount,
                                          "a key of an account is missing or of another type"));
  }
  if (account->identifier != identifierOf(file)) {
    return Read::failure(makeAccountError(AccountErrorCode::damagedAccount,
                                          "the identifier is not the name of the file"));
  }
  return Read::success(*std::move(account));
}

Result<AccountPtr> PropertyListAccountStore::accountOfFile(const path& file) {
  Result<Account> read = readAccount(file);
  if (!read.ok()) return Result<AccountPtr>::failure(read.error());
  Account account = std::move(read).takeValue();
  account.accountStore = weak_from_this();
  return Result<AccountPtr>::success(std::make_shared<const Account>(std::move(account)));
}

void AccountFileProblems::setProblems(const std::map<std::string, ErrorPtr>& problems) {
  std::vector<std::pair<std::shared_ptr<ProblemReporter>, ErrorPtr>> reports;
  {
    MutexLock lock(mutex);
    std::erase_if(reporters, [&](const auto& known) { return !problems.contains(known.first); });
    for (const auto& [fileName, error] : problems) {
      std::shared_ptr<ProblemReporter>& reporter = reporters[fileName];
      if (!reporter) reporter = std::make_shared<ProblemReporter>(fileName);
      reports.emplace_back(reporter, error);
    }
  }
  for (const auto& [reporter, error] : reports) reporter->setProblem(error);
}

}  // namespace quenlet
