#include "platform/contacts/VCardContactStore.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

#include "platform/foundation/FileDescriptor.h"

namespace quenlet {
namespace {

using ReadResult = Result<std::string>;

ErrorPtr makeCardError(ContactErrorCode code, const char* sentence) {
  return makeError(ContactErrorDomain, static_cast<int>(code), sentence);
}

bool isMissingCard(const Error& error) {
  return error.domain() == ContactErrorDomain &&
         error.code() == static_cast<int>(ContactErrorCode::noMeContact);
}

ReadResult readCardFile(const std::filesystem::path& path) {
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file.isOpen() && (errno == ENOENT || errno == ENOTDIR)) {
    return ReadResult::failure(
        makeCardError(ContactErrorCode::noMeContact, "there is no me card file"));
  }
  struct stat status = {};
  if (!file.isOpen() || fstat(file.get(), &status) != 0) {
    return ReadResult::failure(makePosixError(errno, "open the me card"));
  }
  if (!S_ISREG(status.st_mode)) {
    return ReadResult::failure(
        makeCardError(ContactErrorCode::invalidCard, "the me card is not a regular file"));
  }
  // One byte more than a card may have is enough to see that it is too large.
  return readAtMost(
      maximumVCardSizeInBytes + 1,
      [&](char* room, std::size_t size) { return read(file.get(), room, size); },
      "read the me card", static_cast<std::size_t>(status.st_size));
}

void copyField(KeyDescriptor key, const Contact& contact, ContactFields& fields) {
  switch (key) {
    case KeyDescriptor::namePrefix:
      fields.namePrefix = contact.namePrefix();
      break;
    case KeyDescriptor::givenName:
      fields.givenName = contact.givenName();
      break;
    case KeyDescriptor::middleName:
      fields.middleName = contact.middleName();
      break;
    case KeyDescriptor::familyName:
      fields.familyName = contact.familyName();
      break;
    case KeyDescriptor::nameSuffix:
      fields.nameSuffix = contact.nameSuffix();
      break;
    case KeyDescriptor::nickname:
      fields.nickname = contact.nickname();
      break;
    case KeyDescriptor::emailAddresses:
      fields.emailAddresses = contact.emailAddresses();
      break;
    case KeyDescriptor::phoneNumbers:
      fields.phoneNumbers = contact.phoneNumbers();
      break;
    case KeyDescriptor::postalAddresses:
      fields.postalAddresses = contact.postalAddresses();
      break;
    case KeyDescriptor::imageData:
      fields.imageData = contact.imageData();
      break;
  }
}

}  // namespace

Result<VCard> VCardContactStore::readCard(const std::vector<KeyDescriptor>& keys) const {
  const ReadResult text = readCardFile(path);
  if (!text.ok()) return Result<VCard>::failure(text.error());
  Result<VCard> read = parseFirstVCard(text.value(), keys);
  if (!read.ok()) return read;
  VCard card = std::move(read).takeValue();
  ContactFields fields;
  for (const KeyDescriptor key : keys) copyField(key, card.contact, fields);
  card.contact = Contact(std::move(fields));
  return Result<VCard>::success(std::move(card));
}

Result<std::shared_ptr<const Contact>>
VCardContactStore::_crossPlatformUnifiedMeContactWithKeysToFetch(
    const std::vector<KeyDescriptor>& keys) {
  using ContactResult = Result<std::shared_ptr<const Contact>>;
  Result<VCard> card = readCard(keys);
  if (!card.ok()) {
    problems.setProblem(isMissingCard(*card.error()) ? nullptr : card.error());
    return ContactResult::failure(card.error());
  }
  problems.setProblem(nullptr);
  return ContactResult::success(
      std::make_shared<const Contact>(std::move(card).takeValue().contact));
}

}  // namespace quenlet
