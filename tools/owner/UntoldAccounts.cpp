#include "tools/owner/UntoldAccounts.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/accounts/PropertyListAccountStore.h"
#include "platform/files/DurableDirectory.h"
#include "platform/files/FileReading.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/foundation/PropertyListSerializer.h"

namespace quenlet {

UntoldAccounts::UntoldAccounts(const std::filesystem::path& accountsDirectory,
                               std::shared_ptr<DataProxy> files)
    : file(accountsDirectory / fileName), dataProxy(std::move(files)) {}

Result<std::vector<std::string>> UntoldAccounts::identifiers() const {
  using Read = Result<std::vector<std::string>>;
  const auto damage = [] {
    return Read::failure(makePropertyListError(PropertyListErrorCode::unexpectedContent,
                                               "the file does not list identifiers"));
  };
  const auto bytes =
      readFileOfAtMost(PropertyListAccountStore::maximumFileSizeInBytes, file, *dataProxy);
  if (!bytes.ok() && isMissingFile(*bytes.error())) return Read::success({});
  if (!bytes.ok()) return Read::failure(bytes.error());
  const Result<PropertyList> list = PropertyListSerializer::objectWithData(bytes.value());
  if (!list.ok()) return Read::failure(list.error());
  if (list.value().array() == nullptr) return damage();
  std::vector<std::string> identifiers;
  for (const PropertyList& identifier : *list.value().array()) {
    const std::string* text = identifier.string();
    if (text == nullptr || PropertyListAccountStore::problemOfIdentifier(*text)) return damage();
    identifiers.push_back(*text);
  }
  return Read::success(std::move(identifiers));
}

ErrorPtr UntoldAccounts::mark(const std::vector<std::string>& identifiers) const {
  PropertyListArray list(identifiers.begin(), identifiers.end());
  auto bytes = PropertyListSerializer::dataWithObject(PropertyList(std::move(list)));
  if (!bytes.ok()) return bytes.error();
  const Future<bool> written =
      dataProxy->writeData(std::move(bytes).takeValue(), file, WritingOptions::atomic);
  return written.result().ok() ? nullptr : written.result().error();
}

ErrorPtr UntoldAccounts::clear() const {
  if (::unlink(file.c_str()) != 0) {
    return errno == ENOENT ? nullptr : makePosixError(errno, "remove " + std::string(fileName));
  }
  PosixFileOperations operations;
  const int failure = DurableDirectory::synchronize(operations, file.parent_path());
  return failure == 0 ? nullptr : makePosixError(failure, "remove " + std::string(fileName));
}

}  // namespace quenlet
