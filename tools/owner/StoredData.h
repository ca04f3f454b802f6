#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "model/DonationValue.h"
#include "platform/files/LockFile.h"
#include "quenlet/Result.h"
#include "tools/owner/UserFiles.h"

namespace quenlet {

// What is stored for the user, for words that delete it. The files of donations belong to the
// agent: they are removed only while this process holds the lock that an agent holds while it runs.
// One thread.
class StoredData final {
 public:
  explicit StoredData(UserFiles userFiles) : files(std::move(userFiles)) {}
  // An error when the user has no home directory.
  [[nodiscard]] static Result<StoredData> open();

  [[nodiscard]] const UserFiles& userFiles() const { return files; }

  // The donations in the agent's file, which it replaces after each change. Records that make no
  // sense are left out. Changes nothing.
  [[nodiscard]] Result<DonationValues> donations() const;

  // Keeps agents out until the lock is gone. An error with code EWOULDBLOCK while an agent runs,
  // even one that cannot be reached.
  [[nodiscard]] Result<std::shared_ptr<LockFile>> lockAgentOut() const;

  // All files that hold donated values, except the journal, which forgets them itself.
  [[nodiscard]] std::vector<std::filesystem::path> filesOfDonations() const;
  // Those of them that no agent removes: copies of damaged versions, and the page. Neither the
  // agent's file, even where it is a link, nor what the agent may be about to put in its place.
  [[nodiscard]] std::vector<std::filesystem::path> copiesOfDonations() const;

  // Removes files, durably. Missing ones are passed over. On failure some may stay.
  [[nodiscard]] static ErrorPtr remove(const std::vector<std::filesystem::path>& paths);

 private:
  UserFiles files;
};

}  // namespace quenlet
