#include "tools/owner/UserAccounts.h"

#include <utility>

#include "model/DonationRecord.h"
#include "platform/files/DonationFiles.h"
#include "platform/files/DurableDirectory.h"
#include "platform/files/LockFile.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/files/PropertyListFile.h"
#include "platform/files/UserDirectories.h"

namespace quenlet {
namespace {

bool forgetAccounts(PropertyListDictionary& entries) {
  const PropertyListDictionary* known = findDictionary(entries, DonationFiles::versionsKey);
  if (!known || !known->contains(AccountsBundleIdentifier)) return false;
  PropertyListDictionary versions = *known;
  versions.erase(AccountsBundleIdentifier);
  entries.insert_or_assign(DonationFiles::versionsKey, std::move(versions));
  return true;
}

}  // namespace

Result<std::unique_ptr<UserAccounts>> UserAccounts::open() {
  using Opened = Result<std::unique_ptr<UserAccounts>>;
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Opened::failure(home.error());
  return Opened::success(std::unique_ptr<UserAccounts>(
      new UserAccounts(home.value(), std::make_shared<PosixDataProxy>())));
}

UserAccounts::UserAccounts(const std::filesystem::path& home, std::shared_ptr<DataProxy> dataProxy)
    : donationsDirectory(home / DonationFiles::directory),
      files(std::move(dataProxy)),
      accountStore(std::make_shared<PropertyListAccountStore>(
          home / AccountsPath, files, std::make_shared<AccountFileProblems>())),
      untoldAccounts(home / AccountsPath, files) {}

ErrorPtr UserAccounts::forgetWhatAgentHasRead() const {
  PosixFileOperations operations;
  if (const int failure = DurableDirectory::ensure(operations, donationsDirectory)) {
    return makePosixError(failure,
                          "create the directory of " + std::string(DonationFiles::bundleVersions));
  }
  const auto lock = LockFile::tryLock(donationsDirectory / DonationFiles::agentLock);
  if (!lock.ok()) return lock.error();
  const Future<bool> written =
      PropertyListFile(donationsDirectory / DonationFiles::bundleVersions, files)
          .update(&forgetAccounts, PropertyListFile::OnDamage::replaceFile);
  const Result<bool>& outcome = written.result();
  return outcome.ok() ? nullptr : outcome.error();
}

}  // namespace quenlet
