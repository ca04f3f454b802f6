#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "quenlet/Result.h"

namespace quenlet {

// The page that `show` opens, below the runtime directory. It goes when the session ends.
inline constexpr char PagePath[] = "quenlet/pages/card.html";

// Whose a file is, and so what may remove it.
enum class FileKeeper : std::uint8_t {
  donations,  // holds donated values: `disable` and `reset` remove it, `disable` all but a key
  quenlet,    // whatever else the agent and its command keep: `reset` removes it
  owner,      // the owner's own: never removed
  system,     // of the installation or of the running session: never removed
};

// A file or directory that quenlet keeps or reads.
struct UserFile final {
  std::filesystem::path path;
  FileKeeper keeper;
  // What it is for, in a few words.
  const char* purpose;
};

// Every place where quenlet ever stores or reads something for its user; nothing else knows them
// all. Immutable.
class UserFiles final {
 public:
  // Part of the names of copies of damaged files.
  static constexpr char damagedMark[] = ".damaged-";

  // An error when the user has no home directory.
  [[nodiscard]] static Result<UserFiles> open();
  explicit UserFiles(std::filesystem::path homeDirectory);

  [[nodiscard]] const std::filesystem::path& home() const { return homeDirectory; }
  // In the order in which people are shown them.
  [[nodiscard]] const std::vector<UserFile>& all() const { return files; }
  // What is there of a file: itself, the file that it links to, copies of damaged versions and
  // unfinished ones beside it. Not its lock file, which is empty and must stay: another program may
  // be about to lock it. A directory is given back itself.
  [[nodiscard]] static std::vector<std::filesystem::path> present(const UserFile& file);
  // Whether `candidate` is the unfinished next version of `file`, or the leftover of one.
  [[nodiscard]] static bool isUnfinished(const std::filesystem::path& candidate,
                                         const std::filesystem::path& file);
  // All that is present of the files with that keeper.
  [[nodiscard]] std::vector<std::filesystem::path> present(FileKeeper keeper) const;

 private:
  std::filesystem::path homeDirectory;
  std::vector<UserFile> files;
};

}  // namespace quenlet
