#include "platform/files/PasswordEntry.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace quenlet {
namespace {

std::string textOf(const char* text) { return text != nullptr ? text : ""; }

}  // namespace

Result<PasswordEntry> PasswordEntry::ofProcess() {
  // The entry's texts go into the buffer, whose size has no upper bound.
  std::vector<char> buffer(1024);
  passwd entry{};
  passwd* found = nullptr;
  int failure = 0;
  while ((failure = ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found)) ==
         ERANGE) {
    buffer.resize(buffer.size() * 2);
  }
  if (failure == 0 && found == nullptr) failure = ENOENT;
  if (failure != 0) {
    return Result<PasswordEntry>::failure(makePosixError(failure, "look up the user"));
  }
  return Result<PasswordEntry>::success(
      {textOf(found->pw_name), textOf(found->pw_gecos), textOf(found->pw_dir)});
}

}  // namespace quenlet
