#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/accounts/Account.h"
#include "platform/files/DataProxy.h"
#include "platform/files/LockFile.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/ProblemReporter.h"
#include "quenlet/Error.h"
#include "quenlet/Result.h"

namespace quenlet {

// Remembers, for the whole process, which account files cannot be read. Each is reported once on
// standard error while that lasts, however many stores read it. Thread-safe.
class AccountFileProblems final {
 public:
  // The problems that one reading of the whole store found, by file name. Earlier problems that are
  // not among them are over.
  void setProblems(const std::map<std::string, ErrorPtr>& problems) EXCLUDES(mutex);

 private:
  Mutex mutex;
  std::map<std::string, std::shared_ptr<ProblemReporter>> reporters GUARDED_BY(mutex);
};

// Below the home directory.
inline constexpr char AccountsPath[] = "Library/Accounts";

inline constexpr char AccountErrorDomain[] = "ovaro.quenlet.account-error";

// The codes of AccountErrorDomain.
enum class AccountErrorCode {
  // The identifier cannot be a file name.
  unusableIdentifier = 1,
  // The file is a property list, but not an account, or not the one that its name says.
  damagedAccount = 2,
  unknownAccount = 3,
  accountExists = 4,
  // More than Account::maximumValues, which the agent would not accept.
  tooManyValues = 5,
};

[[nodiscard]] ErrorPtr makeAccountError(AccountErrorCode code, std::string sentence);

// Accounts in a directory of property lists, one "<identifier>.plist" each. Thread-safe; must be
// held by a shared pointer. Nothing is cached: each operation works on the current files.
//
// Only regular files of up to `maximumFileSizeInBytes`, and links to such, count. Accounts refer
// weakly to their store. Programs that change the store exclude each other with lock(); readers
// need no lock: files are always replaced as a whole.
class PropertyListAccountStore final
    : public AccountStore,
      public std::enable_shared_from_this<PropertyListAccountStore> {
 public:
  static constexpr std::uintmax_t maximumFileSizeInBytes = std::uintmax_t{1} << 20;
  static constexpr std::size_t maximumIdentifierSizeInBytes = 200;

  // All stores of a process on the same directory share `problems`. The directory may be missing.
  PropertyListAccountStore(std::filesystem::path directory, std::shared_ptr<DataProxy> dataProxy,
                           std::shared_ptr<AccountFileProblems> problems);

  // In byte order of the file names. Hidden files and other names are ignored; a file that is
  // damaged or cannot be read is left out and reported on standard error. Empty when the directory
  // is missing; an error, also reported, when it cannot be listed.
  [[nodiscard]] Result<std::vector<AccountPtr>> accounts() override;
  // One account; unknownAccount when it does not exist, another error if its file is unreadable.
  [[nodiscard]] Result<AccountPtr> accountWithIdentifier(const std::string& identifier);

  // Adds the account or replaces the one with its identifier. Unknown keys in the file survive; a
  // file that is not an account is replaced after a copy was kept. Durable when it returns null.
  // Blocks until the file layer's writer thread has written: do not call it on that thread.
  [[nodiscard]] ErrorPtr save(const Account& account);
  // Removes the account's file, readable or not; an unknownAccount error when it does not exist.
  // Durable when it returns null.
  [[nodiscard]] ErrorPtr remove(const std::string& identifier);
  // The identifiers of files that are there and hold no account, in byte order.
  [[nodiscard]] Result<std::vector<std::string>> damagedAccounts() const;
  // remove() for one of these, after a copy was kept beside it; an error, and no change, when that
  // fails.
  [[nodiscard]] ErrorPtr removeDamaged(const std::string& identifier);
  // Waits until no other program changes the store. The lock is held until its object is destroyed.
  [[nodiscard]] Result<std::shared_ptr<LockFile>> lock();

  // Whether an error of accountWithIdentifier() or remove() says that there is no such account.
  [[nodiscard]] static bool isUnknown(const Error& error);
  // Whether one of accountWithIdentifier() says that the file is there and holds no account.
  [[nodiscard]] static bool isDamage(const Error& error);
  // Null for an identifier that can be a file name: valid UTF-8 of up to
  // `maximumIdentifierSizeInBytes`, without slashes, control characters or a leading dot.
  [[nodiscard]] static ErrorPtr problemOfIdentifier(const std::string& identifier);
  // Null for an account that save() takes, unless the file that it replaces has too much besides.
  [[nodiscard]] static ErrorPtr problemOfAccount(const Account& account);

 private:
  [[nodiscard]] std::filesystem::path fileOf(const std::string& identifier) const;
  [[nodiscard]] Result<PropertyListDictionary> entriesOf(const std::filesystem::path& file) const;
  // The file's entries that do not belong to the account.
  [[nodiscard]] PropertyListDictionary foreignEntriesOf(const std::filesystem::path& file) const;
  [[nodiscard]] Result<Account> readAccount(const std::filesystem::path& file) const;
  [[nodiscard]] Result<AccountPtr> accountOfFile(const std::filesystem::path& file);

  const std::filesystem::path directory;
  const std::shared_ptr<DataProxy> dataProxy;
  const std::shared_ptr<AccountFileProblems> problems;
};

}  // namespace quenlet
