#include "tools/owner/OwnCardFile.h"

#include <cerrno>
#include <utility>

#include "platform/contacts/ContactStore.h"
#include "platform/contacts/VCardContactStore.h"
#include "platform/files/DurableDirectory.h"
#include "platform/files/DurableFileWriter.h"
#include "platform/files/FileReading.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/files/UserDirectories.h"

namespace quenlet {
namespace {

Result<std::string> readFile(const std::filesystem::path& file) {
  PosixDataProxy proxy;
  return readFileOfAtMost(maximumVCardSizeInBytes, file, proxy);
}

ErrorPtr invalid(const std::filesystem::path& file, const std::string& sentence) {
  return makeError(ContactErrorDomain, static_cast<int>(ContactErrorCode::invalidCard),
                   file.native() + ": " + sentence);
}

Result<VCard> onlyCard(const std::filesystem::path& file, const std::string& text) {
  VCards read = parseVCards(text);
  const std::size_t count = read.cards.size() + read.failures.size();
  if (count > 1) {
    return Result<VCard>::failure(
        invalid(file, "it holds " + std::to_string(count) + " cards; your own is one"));
  }
  if (read.cards.empty()) {
    const Error& fault = *read.failures.front();
    return Result<VCard>::failure(
        makeError(fault.domain(), fault.code(), file.native() + ": " + fault.debugDescription()));
  }
  return Result<VCard>::success(std::move(read.cards.front()));
}

}  // namespace

Result<OwnCardFile> OwnCardFile::open() {
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Result<OwnCardFile>::failure(home.error());
  return Result<OwnCardFile>::success(OwnCardFile(home.value() / MeCardPath));
}

Result<OwnCardFile::Placed> OwnCardFile::replaceWith(const std::filesystem::path& source) const {
  const auto failed = [](ErrorPtr error) { return Result<Placed>::failure(std::move(error)); };
  const Result<std::string> text = readFile(source);
  if (!text.ok()) return failed(text.error());
  Result<VCard> card = onlyCard(source, text.value());
  if (!card.ok()) return failed(card.error());
  Result<Replaced> outcome = replaceWithBytes(text.value());
  if (!outcome.ok()) return failed(outcome.error());
  Replaced replaced = std::move(outcome).takeValue();
  return Result<Placed>::success(
      {std::move(card).takeValue(), std::move(replaced.former), replaced.isUnchanged});
}

Result<OwnCardFile::Replaced> OwnCardFile::replaceWithBytes(const std::string& bytes) const {
  const auto failed = [](ErrorPtr error) { return Result<Replaced>::failure(std::move(error)); };
  Replaced replaced;
  const Result<std::string> former = readFile(path);
  replaced.isUnchanged = former.ok() && former.value() == bytes;
  if (replaced.isUnchanged) return Result<Replaced>::success(std::move(replaced));
  if (former.ok() || !isMissingFile(*former.error())) {
    Result<std::filesystem::path> kept = keepFormer(former);
    if (!kept.ok()) return failed(kept.error());
    replaced.former = std::move(kept).takeValue();
  }
  PosixFileOperations operations;
  if (ErrorPtr error = DurableFileWriter(operations).replace(path, bytes)) {
    return failed(std::move(error));
  }
  return Result<Replaced>::success(std::move(replaced));
}

Result<std::filesystem::path> OwnCardFile::keepFormer(const Result<std::string>& former) const {
  using Kept = Result<std::filesystem::path>;
  PosixFileOperations operations;
  DurableFileWriter writer(operations);
  constexpr int mostCopies = 1000;
  for (int number = 1;; ++number) {
    std::filesystem::path copy = path;
    copy += formerMark + std::to_string(number);
    int failure = operations.link(path, copy) == 0 ? 0 : errno;
    if (failure == 0) failure = DurableDirectory::synchronize(operations, copy.parent_path());
    if (failure == 0) return Kept::success(std::move(copy));
    // Not every file system can link, but a copy does as well.
    ErrorPtr error = makePosixError(failure, "keep " + path.native());
    if (failure != EEXIST && former.ok()) error = writer.create(copy, former.value());
    if (!error) return Kept::success(std::move(copy));
    const bool isTaken = error->domain() == PosixErrorDomain && error->code() == EEXIST;
    if (!isTaken || number == mostCopies) return Kept::failure(std::move(error));
  }
}

}  // namespace quenlet
