#include "foreign/LoginRecord.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <vector>

namespace quenlet {
namespace {

// Behind the first comma stand a room and telephone numbers; "&" stands for the login.
std::string fullNameIn(std::string_view gecos, const std::string& login) {
  std::string name;
  for (const char character : gecos.substr(0, gecos.find(','))) {
    if (character == '&') {
      name += login;
    } else {
      name += character;
    }
  }
  return name;
}

}  // namespace

Result<LoginRecord> LoginRecord::ofProcess() {
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
  if (failure != 0)
    return Result<LoginRecord>::failure(makePosixError(failure, "look up the user"));
  const std::string login = found->pw_name;
  return Result<LoginRecord>::success(
      {login, fullNameIn(found->pw_gecos != nullptr ? found->pw_gecos : "", login)});
}

}  // namespace quenlet
