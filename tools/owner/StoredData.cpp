#include "tools/owner/StoredData.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <set>

#include "platform/files/DonationFiles.h"
#include "platform/files/DurableDirectory.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/files/PropertyListFile.h"
#include "tools/owner/DonationJournal.h"

namespace quenlet {

using std::filesystem::path;

namespace {

// The path of a file, and that of the file that it links to, if it is a link.
std::set<path> namesOf(const path& file) {
  std::error_code failure;
  path target = std::filesystem::weakly_canonical(file, failure);
  return failure ? std::set<path>{file} : std::set<path>{file, std::move(target)};
}

}  // namespace

Result<StoredData> StoredData::open() {
  auto files = UserFiles::open();
  if (!files.ok()) return Result<StoredData>::failure(files.error());
  return Result<StoredData>::success(StoredData(std::move(files).takeValue()));
}

Result<DonationValues> StoredData::donations() const {
  const PropertyListFile file(files.home() / DonationFiles::directory / DonationFiles::donations,
                              std::make_shared<PosixDataProxy>());
  const Result<PropertyListDictionary> contents = file.read();
  if (!contents.ok()) return Result<DonationValues>::failure(contents.error());
  const PropertyList* list = findEntry(contents.value(), DonationFiles::donationsKey);
  DonationValues donations;
  if (!list || !list->array()) return Result<DonationValues>::success({});
  for (const PropertyList& record : *list->array()) {
    if (!record.dictionary()) continue;
    auto donation = DonationValue::initWithPropertyListRepresentation(*record.dictionary());
    if (donation) donations.push_back(std::move(donation));
  }
  return Result<DonationValues>::success(std::move(donations));
}

Result<std::shared_ptr<LockFile>> StoredData::lockAgentOut() const {
  const path directory = files.home() / DonationFiles::directory;
  PosixFileOperations operations;
  if (const int failure = DurableDirectory::ensure(operations, directory)) {
    return Result<std::shared_ptr<LockFile>>::failure(
        makePosixError(failure, "create the directory of donations"));
  }
  return LockFile::tryLock(directory / DonationFiles::agentLock);
}

std::vector<path> StoredData::filesOfDonations() const {
  const path journal = files.home() / DonationFiles::directory / DonationJournal::fileName;
  std::vector<path> found = files.present(FileKeeper::donations);
  std::erase_if(found,
                [names = namesOf(journal)](const path& file) { return names.contains(file); });
  return found;
}

std::vector<path> StoredData::copiesOfDonations() const {
  const auto agents = namesOf(files.home() / DonationFiles::directory / DonationFiles::donations);
  std::vector<path> copies = filesOfDonations();
  std::erase_if(copies, [&agents](const path& file) {
    return std::any_of(agents.begin(), agents.end(), [&file](const path& agentsFile) {
      return file == agentsFile || UserFiles::isUnfinished(file, agentsFile);
    });
  });
  return copies;
}

ErrorPtr StoredData::remove(const std::vector<path>& paths) {
  std::set<path> directories;
  for (const path& file : paths) {
    if (::unlink(file.c_str()) != 0 && errno != ENOENT) {
      return makePosixError(errno, "remove " + file.string());
    }
    directories.insert(DurableDirectory::of(file));
  }
  PosixFileOperations operations;
  for (const path& directory : directories) {
    if (const int failure = DurableDirectory::synchronize(operations, directory)) {
      return makePosixError(failure, "remove files from " + directory.string());
    }
  }
  return nullptr;
}

}  // namespace quenlet
