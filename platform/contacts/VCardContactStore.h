#pragma once

#include <filesystem>
#include <utility>
#include <vector>

#include "platform/contacts/ContactStore.h"
#include "platform/contacts/VCard.h"
#include "platform/foundation/ProblemReporter.h"

namespace quenlet {

// The owner's card, below the home directory.
inline constexpr char MeCardPath[] = "Library/Contacts/me.vcf";

// The contact database as a vCard file that people edit with any address book: its first card is
// the me contact. Reads the file anew for each fetch and does not watch it. Thread-safe.
//
// An error other than a missing file is also reported on standard error, once while it lasts.
class VCardContactStore final : public ContactStore {
 public:
  explicit VCardContactStore(std::filesystem::path pathOfCard)
      : path(std::move(pathOfCard)), problems(path.filename().string()) {}

  // Reads the file on the calling thread. A missing file is noMeContact; a file that cannot be
  // opened or read is a POSIX error; a file that is not regular, or larger than a card may be, is
  // invalidCard; a first card that cannot be read is invalidCard, unsupportedVersion or notAPerson.
  // Anything behind that card is ignored. Never waits for the writer of a FIFO.
  [[nodiscard]] Result<std::shared_ptr<const Contact>>
  _crossPlatformUnifiedMeContactWithKeysToFetch(const std::vector<KeyDescriptor>& keys) override;
  // The same with what else was read; reports nothing on standard error.
  [[nodiscard]] Result<VCard> readCard(const std::vector<KeyDescriptor>& keys) const;

 private:
  const std::filesystem::path path;
  ProblemReporter problems;
};

}  // namespace quenlet
