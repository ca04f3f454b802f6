#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/accounts/AccountFileProblems.h"
#include "platform/accounts/AccountStore.h"
#include "platform/files/DataProxy.h"
#include "platform/files/LockFile.h"
#include "platform/foundation/Either.h"

namespace quenlet {

inline constexpr char AccountErrorDomain[] = "ovaro.quenlet.account-error";

// The codes of AccountErrorDomain.
enum class AccountErrorCode {
  // An identifier that cannot be a file name.
  unusableIdentifier = 1,
  // A file that is a property list, but no account, or another one than its name says.
  damagedAccount = 2,
  unknownAccount = 3,
  accountExists = 4,
  // More than Account::maximumValues, which no agent would take.
  tooManyValues = 5,
};

[[nodiscard]] ErrorPtr makeAccountError(AccountErrorCode code, std::string sentence);

// Accounts in a directory of property lists, "<identifier>.plist" each. Thread-safe; held by a
// shared pointer. Nothing is cached: each operation works on the files as they are.
//
// Only regular files count, behind links too, of up to `maximumFileSizeInBytes`. The accounts it
// gives out point weakly to it. Programs that change the store exclude each other with lock();
// readers need no lock, for a file is replaced as a whole.
class PropertyListAccountStore final
    : public AccountStore,
      public std::enable_shared_from_this<PropertyListAccountStore> {
 public:
  static constexpr std::uintmax_t maximumFileSizeInBytes = std::uintmax_t{1} << 20;
  static constexpr std::size_t maximumIdentifierSizeInBytes = 200;

  // `problems` is shared by all stores of the process on the same directory, which may be missing.
  PropertyListAccountStore(std::filesystem::path directory, std::shared_ptr<DataProxy> dataProxy,
                           std::shared_ptr<AccountFileProblems> problems);

  // By file name, in byte order. A file that cannot be read or is damaged is left out and said on
  // standard error; hidden files and those of other names are no accounts. None in a directory that
  // is missing; an error, said there too, for one that cannot be listed.
  [[nodiscard]] Result<std::vector<AccountPtr>> accounts() override;
  // One account; unknownAccount when there is none, another error when its file cannot be read.
  [[nodiscard]] Result<AccountPtr> accountWithIdentifier(const std::string& identifier);

  // Adds the account or puts it in the place of the one with its identifier; keys that are no
  // account's in the file survive, and a file that is no account is kept aside. Durable when it
  // returns null. Waits for the file layer's writer thread: do not call it there.
  [[nodiscard]] ErrorPtr save(const Account& account);
  // Removes the account's file, readable or not; unknownAccount when there is none. Durable when it
  // returns null.
  [[nodiscard]] ErrorPtr remove(const std::string& identifier);
  // Waits until no other program changes the store; the lock lasts as long as the object.
  [[nodiscard]] Result<std::shared_ptr<LockFile>> lock();

  // Null for an identifier that can be a file's name: valid UTF-8 of moderate length without
  // slashes and control characters that does not begin with a dot.
  [[nodiscard]] static ErrorPtr problemOfIdentifier(const std::string& identifier);

 private:
  [[nodiscard]] std::filesystem::path fileOf(const std::string& identifier) const;
  [[nodiscard]] Result<PropertyListDictionary> entriesOf(const std::filesystem::path& file) const;
  // What stands in the file besides an account's own keys.
  [[nodiscard]] PropertyListDictionary foreignEntriesOf(const std::filesystem::path& file) const;
  [[nodiscard]] Result<AccountPtr> accountOfFile(const std::filesystem::path& file);

  const std::filesystem::path directory;
  const std::shared_ptr<DataProxy> dataProxy;
  const std::shared_ptr<AccountFileProblems> problems;
};

}  // namespace quenlet
