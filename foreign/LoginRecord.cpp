#include "foreign/LoginRecord.h"

#include <string_view>

#include "platform/files/PasswordEntry.h"

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
  const auto entry = PasswordEntry::ofProcess();
  if (!entry.ok()) return Result<LoginRecord>::failure(entry.error());
  const std::string& login = entry.value().login;
  return Result<LoginRecord>::success({login, fullNameIn(entry.value().remarks, login)});
}

}  // namespace quenlet
