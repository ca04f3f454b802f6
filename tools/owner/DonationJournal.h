#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/files/PropertyListFile.h"
#include "tools/owner/JournalEntry.h"

namespace quenlet {

// What this program donated for the owner, so that it can be taken back, kept in a file of its own
// beside the agent's. Thread-safe; several processes may use it at once.
//
// Bounded: of more than 50 donations, or more than 8 MiB, the oldest are forgotten. A damaged file
// counts as empty when a donation is noted, and a copy of it is kept; to all else it is an error in
// PropertyListErrorDomain.
class DonationJournal final {
 public:
  // In the directory of the donations, mode 0600; changed under the lock of "<name>.lock".
  static constexpr char fileName[] = "tool-journal.plist";
  struct Bounds final {
    std::size_t entries = 50;
    std::size_t bytes = std::size_t{8} << 20;
  };

  DonationJournal(const std::filesystem::path& donationsDirectory,
                  std::shared_ptr<DataProxy> dataProxy);
  DonationJournal(const std::filesystem::path& donationsDirectory,
                  std::shared_ptr<DataProxy> dataProxy, Bounds journalBounds);
  // The calling user's; an error without a home directory.
  [[nodiscard]] static Result<DonationJournal> open();

  [[nodiscard]] const std::filesystem::path& path() const { return file.path(); }

  // Oldest first; empty without a file.
  [[nodiscard]] Result<std::vector<JournalEntry>> entries() const;
  // The secret key under which paths and identifiers of cards have their pseudonyms; nothing before
  // the first donation.
  [[nodiscard]] Result<std::optional<std::string>> knownKey() const;
  // A key for the first donation.
  [[nodiscard]] static std::string newKey();
  // Takes over a key, unless donations have been noted under another one. Whether this is the key
  // now.
  [[nodiscard]] Result<bool> setKey(const std::string& key) const;

  // Notes a donation that was made under `key`, durably; call it before the agent is asked. The
  // entry comes back as it is kept: with its number, and with less in it if it is too large to be
  // kept whole. The first donation brings the key; an error when there is another one by now.
  [[nodiscard]] Result<JournalEntry> add(JournalEntry entry, const std::string& key) const;
  // Notes which values of a donation the agent did not take. Nothing happens if it is forgotten.
  [[nodiscard]] ErrorPtr setLeftOut(std::int64_t number,
                                    const std::vector<std::string>& donationIdentifiers) const;
  // Forgets one donation.
  [[nodiscard]] ErrorPtr remove(std::int64_t number) const;
  // Forgets all donations, but not the key: the same file still replaces what it gave if the agent
  // holds it after all. A damaged file is removed; copies of damaged ones stay. Succeeds without a
  // file.
  [[nodiscard]] ErrorPtr erase() const;

 private:
  [[nodiscard]] ErrorPtr removeFile() const;
  [[nodiscard]] ErrorPtr changeEntries(
      const std::function<void(std::vector<JournalEntry>& entries)>& edit) const;
  [[nodiscard]] ErrorPtr change(const PropertyListFile::Change& change,
                                PropertyListFile::OnDamage onDamage) const;

  PropertyListFile file;
  Bounds bounds;
};

}  // namespace quenlet
