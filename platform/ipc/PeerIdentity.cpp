#include "platform/ipc/PeerIdentity.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "platform/foundation/FileDescriptor.h"

#ifndef SO_PEERPIDFD
#define SO_PEERPIDFD 77
#endif

namespace quenlet {

namespace {

FileDescriptor pinPeer(int socket, pid_t process) {
  int pinned = -1;
  socklen_t size = sizeof(pinned);
  if (::getsockopt(socket, SOL_SOCKET, SO_PEERPIDFD, &pinned, &size) == 0) {
    return FileDescriptor(pinned);
  }
  // Any other failure means that the process has ended: its number must not be looked up again.
  if (errno != ENOPROTOOPT) return FileDescriptor();
  return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
}

// A pidfd is readable once its process has ended.
bool isRunning(int pinned) {
  pollfd look{pinned, POLLIN, 0};
  return ::poll(&look, 1, 0) == 0;
}

bool isSameFile(const std::filesystem::path& a, const std::filesystem::path& b) {
  struct stat first {};
  struct stat second {};
  return ::stat(a.c_str(), &first) == 0 && ::stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

std::optional<std::filesystem::path> readExecutable(pid_t process, int pinned) {
  if (process <= 0 || pinned < 0) return std::nullopt;
  const std::filesystem::path own = "/proc/" + std::to_string(process);
  // In a user namespace of its own a process may point its exe link at any file (PR_SET_MM).
  if (!isSameFile(own / "ns/user", "/proc/self/ns/user")) return std::nullopt;
  const std::filesystem::path link = own / "exe";
  std::error_code failure;
  std::filesystem::path executable = std::filesystem::read_symlink(link, failure);
  if (failure || executable.native().ends_with(" (deleted)")) return std::nullopt;
  // A process can mount its own file over another one's path; the link itself leads to the file.
  if (!isSameFile(link, executable)) return std::nullopt;
  // Still the pinned process, so what was read under its number was its own.
  if (!isRunning(pinned)) return std::nullopt;
  return executable;
}

}  // namespace

Result<PeerIdentity> PeerIdentity::ofSocket(int socket) {
  ucred credentials{};
  socklen_t size = sizeof(credentials);
  if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) {
    return Result<PeerIdentity>::failure(makePosixError(errno, "identify a peer"));
  }
  const FileDescriptor pinned = pinPeer(socket, credentials.pid);
  return Result<PeerIdentity>::success(
      {credentials.uid, credentials.pid, readExecutable(credentials.pid, pinned.get())});
}

PeerIdentity PeerIdentity::ofProcess(uid_t user, pid_t process, int pidfd) {
  return {user, process, readExecutable(process, pidfd)};
}

}  // namespace quenlet
