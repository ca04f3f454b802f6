#include "tools/owner/SystemChecks.h"

#include <sys/inotify.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "foreign/OutsideCommand.h"
#include "platform/files/UserDirectories.h"
#include "platform/foundation/FileDescriptor.h"

namespace quenlet {
namespace {

std::string reasonOf(int failure) { return std::generic_category().message(failure); }

// Nearest directory on the way up that is there.
std::filesystem::path existing(std::filesystem::path directory) {
  std::error_code failure;
  while (directory.has_relative_path() && !std::filesystem::is_directory(directory, failure)) {
    directory = directory.parent_path();
  }
  return directory;
}

}  // namespace

Finding checkKernel() {
  utsname system{};
  ::uname(&system);
  int major = 0;
  int minor = 0;
  std::sscanf(system.release, "%d.%d", &major, &minor);
  const std::string version = std::string("Linux ") + system.release;
  if (std::pair(major, minor) < std::pair(5, 3)) {
    return {false, version + " is too old", {"the agent needs Linux 5.3 or later"}};
  }
  std::error_code failure;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", failure);
  if (failure || self.empty()) {
    return {false,
            "/proc cannot be read: " + failure.message(),
            {"mount it: the agent finds there which program talks to it"}};
  }
  const FileDescriptor pinned(static_cast<int>(::syscall(SYS_pidfd_open, ::getpid(), 0)));
  if (!pinned.isOpen()) {
    return {false,
            "processes cannot be pinned (pidfd_open): " + reasonOf(errno),
            {"let the sandbox or container allow that call"}};
  }
  return {true, version};
}

Finding checkNotifications() {
  const FileDescriptor watch(::inotify_init1(IN_CLOEXEC));
  if (!watch.isOpen()) {
    return {false,
            "files cannot be watched: " + reasonOf(errno),
            {"raise fs.inotify.max_user_instances with sysctl"}};
  }
  if (::inotify_add_watch(watch.get(), "/", IN_DELETE_SELF) < 0) {
    return {false,
            "no more files can be watched: " + reasonOf(errno),
            {"raise fs.inotify.max_user_watches with sysctl"}};
  }
  return {true, "files can be watched"};
}

Finding checkDisk() {
  constexpr std::uint64_t leastMebibytes = 64;
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return {false, home.error()->description()};
  const std::filesystem::path place = existing(home.value() / "Library/Contacts");
  struct statvfs disk {};
  if (::statvfs(place.c_str(), &disk) != 0) {
    return {false, place.native() + ": " + reasonOf(errno)};
  }
  if ((disk.f_flag & ST_RDONLY) != 0) {
    return {
        false, place.native() + " is on a disk that cannot be written", {"mount it for writing"}};
  }
  const std::uint64_t free = (std::uint64_t{disk.f_bavail} * disk.f_frsize) >> 20;
  const std::string text = std::to_string(free) + " MiB are free";
  // Some file systems do not count files, and say 0 of 0.
  const bool hasFiles = disk.f_files == 0 || disk.f_favail > 0;
  if (free >= leastMebibytes && hasFiles) return {true, text};
  return {false,
          hasFiles ? text : "no more files can be made",
          {"make room on the disk of " + place.native()}};
}

Finding checkUnit() {
  const auto stateOf = [](const std::string& unit) {
    return outputOf({"systemctl", "--user", "is-enabled", unit}).value_or("");
  };
  const std::string service = stateOf("quenlet-agent.service");
  // Without a manager, its command writes nothing there.
  if (service.empty()) return {true, "no systemd for this user; start the agent yourself"};
  if (service == "not-found") return {true, "not installed for systemd; start the agent yourself"};
  const std::string socket = stateOf("quenlet-agent.socket");
  for (const auto& [unit, state] :
       {std::pair("quenlet-agent.service", service), std::pair("quenlet-agent.socket", socket)}) {
    if (!state.starts_with("masked")) continue;
    return {false,
            std::string(unit) + " is " + state + ": systemd does not start the agent",
            {Advice::command(std::string("systemctl --user unmask ") + unit)}};
  }
  if (service != "disabled") return {true, service};
  if (socket.starts_with("enabled")) return {true, "socket " + socket + ": starts on demand"};
  return {false,
          service + ": systemd does not start the agent",
          {Advice::command("systemctl --user enable --now quenlet-agent")}};
}

}  // namespace quenlet
