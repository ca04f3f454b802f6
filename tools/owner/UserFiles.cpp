#include "tools/owner/UserFiles.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "platform/accounts/PropertyListAccountStore.h"
#include "platform/contacts/VCardContactStore.h"
#include "platform/counters/PrometheusCounterStore.h"
#include "platform/extensions/ManifestDirectory.h"
#include "platform/feedback/FeedbackFile.h"
#include "platform/files/DonationFiles.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/UserDirectories.h"
#include "platform/ipc/EntitlementDatabase.h"
#include "platform/preferences/UserDefaults.h"
#include "platform/telephony/PropertyListDeviceInfo.h"
#include "platform/telephony/PropertyListPhoneNumberMonitor.h"
#include "protocol/CorvelInterface.h"
#include "tools/owner/DonationJournal.h"
#include "tools/owner/OwnCardFile.h"
#include "tools/owner/ShownNumbers.h"
#include "tools/owner/UntoldAccounts.h"

namespace quenlet {
namespace {

using std::filesystem::path;

// Whether `candidate` stands beside the file on its account: a copy of a damaged or
// former version, or one that was not finished.
bool isCompanion(const path& candidate, const path& file) {
  const std::string name = candidate.filename();
  return name.starts_with(file.filename().native() + UserFiles::damagedMark) ||
         name.starts_with(file.filename().native() + OwnCardFile::formerMark) ||
         UserFiles::isUnfinished(candidate, file);
}

void addPresent(std::vector<path>& found, const path& file) {
  std::error_code failure;
  if (std::filesystem::is_directory(file, failure)) {
    found.push_back(file);
    return;
  }
  if (std::filesystem::exists(std::filesystem::symlink_status(file, failure))) {
    found.push_back(file);
  }
  std::vector<path> companions;
  std::filesystem::directory_iterator entries(file.parent_path(), failure);
  for (; !failure && entries != std::filesystem::directory_iterator(); entries.increment(failure)) {
    const path& entry = entries->path();
    if (isCompanion(entry, file)) companions.push_back(entry);
  }
  std::sort(companions.begin(), companions.end());
  found.insert(found.end(), companions.begin(), companions.end());
}

}  // namespace

Result<UserFiles> UserFiles::open() {
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Result<UserFiles>::failure(home.error());
  UserFiles files(home.value());
  // A look at the files is not to make the directory.
  const auto runtime = UserDirectories::placeOfRuntimeDirectory();
  if (runtime.ok() &&
      !UserDirectories::examinePrivateDirectory(runtime.value(), "the runtime directory")) {
    const std::vector<UserFile> more = {
        {runtime.value() / PagePath, FileKeeper::donations, "the page that you looked at last"},
        {runtime.value() / ShownNumbers::donationsPath, FileKeeper::quenlet,
         "which numbers list showed"},
        {runtime.value() / ShownNumbers::rejectionsPath, FileKeeper::quenlet,
         "which numbers rejections showed"},
        {runtime.value() / "quenlet" / CorvelServiceName, FileKeeper::system,
         "where the agent listens"},
    };
    files.files.insert(files.files.end(), more.begin(), more.end());
  }
  return Result<UserFiles>::success(std::move(files));
}

UserFiles::UserFiles(path home) : homeDirectory(std::move(home)) {
  const path donations = homeDirectory / DonationFiles::directory;
  files = {
      {donations / DonationFiles::donations, FileKeeper::donations, "donations"},
      {donations / DonationJournal::fileName, FileKeeper::donations, "what you donated, for undo"},
      {donations / DonationFiles::bundleVersions, FileKeeper::quenlet, "which accounts were read"},
      {donations / DonationFiles::rejections, FileKeeper::quenlet, "rejections of old"},
      {donations / PosixDataProxy::backupTag, FileKeeper::quenlet, "keeps donations from backups"},
      {homeDirectory / FeedbackPath, FileKeeper::quenlet, "rejections"},
      {homeDirectory / PreferencesPath, FileKeeper::quenlet, "preferences"},
      {homeDirectory / CountersPath, FileKeeper::quenlet, "counts of the daily reports"},
      {homeDirectory / MeCardPath, FileKeeper::owner, "your own card"},
      {homeDirectory / AccountsPath, FileKeeper::owner, "your accounts"},
      {homeDirectory / AccountsPath / UntoldAccounts::fileName, FileKeeper::quenlet,
       "accounts that the agent has yet to hear of"},
      {homeDirectory / SIMCardsPath, FileKeeper::owner, "numbers of the SIM cards"},
      {homeDirectory / DevicePath, FileKeeper::owner, "the kind of device"},
      {donations / DonationFiles::agentLock, FileKeeper::system, "held by a running agent"},
      {donations / DonationFiles::collectLock, FileKeeper::system, "held while donors are asked"},
  };
  const path prefix = EntitlementDatabase::prefixOfRunningProgram();
  for (const ManifestDirectory& directory :
       ManifestDirectory::directoriesOf(prefix, homeDirectory)) {
    files.push_back({directory.path(), FileKeeper::system, "donor extensions"});
  }
  for (const path& directory :
       {prefix / EntitlementDatabase::installedPath,
        path(EntitlementDatabase::systemConfiguration) / EntitlementDatabase::configuredPath}) {
    files.push_back({directory, FileKeeper::system, "which programs are served"});
  }
}

std::vector<path> UserFiles::present(const UserFile& file) {
  std::vector<path> found;
  addPresent(found, file.path);
  std::error_code failure;
  if (std::filesystem::is_symlink(file.path, failure) &&
      !std::filesystem::is_directory(file.path, failure)) {
    // A file that is a link is written where it leads to.
    const path target = std::filesystem::weakly_canonical(file.path, failure);
    if (!failure) addPresent(found, target);
  }
  return found;
}

bool UserFiles::isUnfinished(const path& candidate, const path& file) {
  return candidate.parent_path() == file.parent_path() &&
         candidate.filename().native().starts_with("." + file.filename().native() + ".quenlet-");
}

std::vector<path> UserFiles::present(FileKeeper keeper) const {
  std::vector<path> found;
  for (const UserFile& file : files) {
    if (file.keeper != keeper) continue;
    std::vector<path> more = present(file);
    found.insert(found.end(), more.begin(), more.end());
  }
  return found;
}

}  // namespace quenlet
