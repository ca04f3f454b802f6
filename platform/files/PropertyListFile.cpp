#include "platform/files/PropertyListFile.h"

#include <utility>

#include "platform/files/DurableDirectory.h"
#include "platform/files/FileReading.h"
#include "platform/files/LockFile.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/foundation/PropertyListSerializer.h"

namespace quenlet {
namespace {

bool isDamage(const ErrorPtr& error) { return error->domain() == PropertyListErrorDomain; }

// The same error with the name of the file, which the caller may not know.
ErrorPtr damageNaming(const std::filesystem::path& file, const Error& damage) {
  return makeError(damage.domain(), damage.code(),
                   file.filename().string() + " is damaged: " + damage.debugDescription());
}

// Creates the directory if needed: the lock file is older than the first write.
Result<std::shared_ptr<LockFile>> lockBeside(const std::filesystem::path& file,
                                             std::chrono::milliseconds patience) {
  PosixFileOperations operations;
  if (const int failure = DurableDirectory::ensure(operations, DurableDirectory::of(file))) {
    return Result<std::shared_ptr<LockFile>>::failure(
        makePosixError(failure, "create the directory of " + file.filename().string()));
  }
  std::filesystem::path lockPath = file;
  lockPath += ".lock";
  return LockFile::lock(lockPath, patience);
}

Result<PropertyListDictionary> dictionaryOfBytes(const std::string& bytes) {
  using Entries = Result<PropertyListDictionary>;
  const Result<PropertyList> object = PropertyListSerializer::objectWithData(bytes);
  if (!object.ok()) return Entries::failure(object.error());
  if (const PropertyListDictionary* entries = object.value().dictionary()) {
    return Entries::success(*entries);
  }
  return Entries::failure(
      makeError(PropertyListErrorDomain, 0, "the top level of the file is not a dictionary"));
}

}  // namespace

PropertyListFile::PropertyListFile(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy,
                                   std::chrono::milliseconds lockPatience)
    : filePath(std::move(path)), dataProxy(std::move(dataProxy)), lockPatience(lockPatience) {}

Result<PropertyListDictionary> PropertyListFile::read() const {
  const Future<std::string> reading = dataProxy->dataWithContentsOfURL(filePath);
  const Result<std::string>& bytes = reading.result();
  if (bytes.ok()) {
    Result<PropertyListDictionary> entries = dictionaryOfBytes(bytes.value());
    if (entries.ok()) return entries;
    return Result<PropertyListDictionary>::failure(damageNaming(filePath, *entries.error()));
  }
  if (!isMissingFile(*bytes.error())) return Result<PropertyListDictionary>::failure(bytes.error());
  return Result<PropertyListDictionary>::success({});
}

Future<bool> PropertyListFile::update(const Change& change, OnDamage onDamage) const {
  const Result<std::shared_ptr<LockFile>> locking = lockBeside(filePath, lockPatience);
  if (!locking.ok()) return Future<bool>::futureWithError(locking.error());
  std::shared_ptr<LockFile> lock = locking.value();

  Result<PropertyListDictionary> current = read();
  const bool damaged = !current.ok();
  if (damaged && !isDamage(current.error())) return Future<bool>::futureWithError(current.error());
  if (damaged && onDamage == OnDamage::fail) {
    return Future<bool>::futureWithError(current.error());
  }
  PropertyListDictionary entries;
  if (!damaged) entries = std::move(current).takeValue();
  if (!change(entries)) return Future<bool>::futureWithResult(true);

  const Result<std::string> bytes = PropertyListSerializer::dataWithObject(std::move(entries));
  if (!bytes.ok()) return Future<bool>::futureWithError(bytes.error());
  // Not earlier: if nothing is written in its place, the damaged file stays and needs no copy.
  if (damaged) keepDamagedFile();
  const Promise<bool> promise;
  // Frees the lock before the future completes: a handler may start the next change at once.
  dataProxy->writeData(bytes.value(), filePath, WritingOptions::atomic)
      .onCompletion([promise, lock = std::move(lock)](const Result<bool>& outcome) mutable {
        lock.reset();
        promise.complete(outcome);
      });
  return promise.future();
}

void PropertyListFile::keepDamagedFile() const { dataProxy->keepDamagedFile(filePath); }

}  // namespace quenlet
