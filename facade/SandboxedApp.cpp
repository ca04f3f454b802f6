#include "facade/SandboxedApp.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "apps/AppPermission.h"
#include "foreign/KeyFile.h"
#include "platform/foundation/FileDescriptor.h"

namespace quenlet {
namespace {

using App = Result<std::optional<std::string>>;

constexpr std::size_t mostBytesInInfo = std::size_t{64} << 10;

App unreadable(int errorNumber) {
  return App::failure(makePosixError(errorNumber, "look into the sandbox of a caller"));
}

}  // namespace

Result<std::string> appIdentifierIn(std::string_view flatpakInfo) {
  const auto info = KeyFile::parse(flatpakInfo, KeyFile::Doubles::refused);
  auto name = info.ok() ? info.value().text("Application", "name") : std::nullopt;
  // An app must not pass for one of this project's own donors.
  const bool isReserved =
      name && (name->starts_with("org.quenlet.") || name->starts_with("ovaro.quenlet."));
  if (!name || isReserved || !isAppIdentifier(*name)) {
    return Result<std::string>::failure(makePosixError(EINVAL, "tell an app's name"));
  }
  return Result<std::string>::success(*std::move(name));
}

Result<std::optional<std::string>> sandboxedAppOf(pid_t process) {
  const std::string path = "/proc/" + std::to_string(process) + "/root";
  const FileDescriptor root(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  // Also ENOENT: the process is gone.
  if (!root.isOpen()) return unreadable(errno);
  const FileDescriptor info(
      ::openat(root.get(), ".flatpak-info", O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!info.isOpen() && errno == ENOENT) return App::success(std::nullopt);
  if (!info.isOpen()) return unreadable(errno);
  struct stat status {};
  if (::fstat(info.get(), &status) != 0) return unreadable(errno);
  if (!S_ISREG(status.st_mode)) return unreadable(EINVAL);
  const auto text = readAtMost(
      mostBytesInInfo + 1,
      [&info](char* bytes, std::size_t size) { return ::read(info.get(), bytes, size); },
      "look into the sandbox of a caller");
  if (!text.ok()) return App::failure(text.error());
  if (text.value().size() > mostBytesInInfo) return unreadable(EFBIG);
  auto app = appIdentifierIn(text.value());
  if (!app.ok()) return App::failure(app.error());
  return App::success(std::move(app).takeValue());
}

}  // namespace quenlet
