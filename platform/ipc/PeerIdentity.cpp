#include "platform/ipc/PeerIdentity.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <string>
#include <utility>

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

using FileNumber = std::pair<dev_t, ino_t>;

// Nothing if there is no such file.
std::optional<FileNumber> fileAt(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return FileNumber(status.st_dev, status.st_ino);
}

bool isSameFile(const std::optional<FileNumber>& a, const std::optional<FileNumber>& b) {
  return a && b && *a == *b;
}

// Where a link leads; empty for none. Unlike std::filesystem's, without a look at the link first:
// what the kernel says of a program is shorter than PATH_MAX.
std::string readLink(const std::string& link) {
  std::array<char, PATH_MAX> room;
  const ssize_t length = ::readlink(link.c_str(), room.data(), room.size());
  const bool isWhole = length > 0 && static_cast<std::size_t>(length) < room.size();
  return isWhole ? std::string(room.data(), static_cast<std::size_t>(length)) : std::string();
}

std::optional<std::filesystem::path> readExecutable(pid_t process, int pinned) {
  if (process <= 0 || pinned < 0) return std::nullopt;
  // Stays the same, so a look that has succeeded is enough.
  thread_local std::optional<FileNumber> ownNamespace;
  if (!ownNamespace) ownNamespace = fileAt("/proc/self/ns/user");
  const std::string directory = "/proc/" + std::to_string(process);
  // In a user namespace of its own a process may point its exe link at any file (PR_SET_MM).
  if (!isSameFile(fileAt(directory + "/ns/user"), ownNamespace)) return std::nullopt;
  const std::string link = directory + "/exe";
  const std::string executable = readLink(link);
  if (executable.empty() || executable.ends_with(" (deleted)")) return std::nullopt;
  // A process can mount its own file over another one's path; the link itself leads to the file.
  if (!isSameFile(fileAt(link), fileAt(executable))) return std::nullopt;
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
