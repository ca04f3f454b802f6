#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>

#include "quenlet/Result.h"

namespace quenlet {

// Which program another process runs, as the kernel tells it. A value type.
struct PeerIdentity final {
  uid_t user = 0;
  pid_t process = 0;
  // The program file that the process runs, by the path it has for us. None when it cannot be told
  // with certainty: the process has ended, is in another user namespace than we are, its file was
  // deleted or replaced, or another file lies at that path in its own view of the file system.
  std::optional<std::filesystem::path> executable;

  // Who is at the other end of a connected Unix socket. Looks once. The process that connected is
  // pinned while its program is read, so that a process which gets the same number later is not
  // taken for it. On kernels that cannot pin the peer itself (before 6.5), a number that was given
  // away before this call goes unnoticed.
  [[nodiscard]] static Result<PeerIdentity> ofSocket(int socket);
  // The process of this number, pinned by `pidfd`, for callers whom a third party vouches for, such
  // as a message bus. No program when the two are not the same living process: the caller makes
  // sure that the number was the process's own before it was pinned.
  [[nodiscard]] static PeerIdentity ofProcess(uid_t user, pid_t process, int pidfd);
};

}  // namespace quenlet
