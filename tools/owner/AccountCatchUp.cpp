#include "tools/owner/AccountCatchUp.h"

#include <utility>

#include "model/DonationRecord.h"
#include "platform/files/DonationFiles.h"
#include "platform/files/DurableDirectory.h"
#include "platform/files/LockFile.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/files/PropertyListFile.h"

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

AccountCatchUp::AccountCatchUp(std::filesystem::path donationsDirectory,
                               std::shared_ptr<DataProxy> dataProxy)
    : directory(std::move(donationsDirectory)), dataProxy(std::move(dataProxy)) {}

ErrorPtr AccountCatchUp::schedule() const {
  PosixFileOperations operations;
  if (const int failure = DurableDirectory::ensure(operations, directory)) {
    return makePosixError(failure,
                          "create the directory of " + std::string(DonationFiles::bundleVersions));
  }
  const auto lock = LockFile::tryLock(directory / DonationFiles::agentLock);
  if (!lock.ok()) return lock.error();
  const Future<bool> written =
      PropertyListFile(directory / DonationFiles::bundleVersions, dataProxy)
          .update(&forgetAccounts, PropertyListFile::OnDamage::replaceFile);
  const Result<bool>& outcome = written.result();
  return outcome.ok() ? nullptr : outcome.error();
}

}  // namespace quenlet
