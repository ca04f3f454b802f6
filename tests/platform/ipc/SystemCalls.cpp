#include "tests/platform/ipc/SystemCalls.h"

#include <sys/syscall.h>
#include <unistd.h>

#include "platform/scheduling/attachedDescriptors.h"

using quenlet::SystemCalls;

extern "C" {

int setsockopt(int socket, int level, int name, const void* value, socklen_t size) noexcept {
  if (name == SO_PASSRIGHTS && SystemCalls::hidePassRights) {
    errno = ENOPROTOOPT;
    return -1;
  }
  return static_cast<int>(::syscall(SYS_setsockopt, socket, level, name, value, size));
}

int getsockopt(int socket, int level, int name, void* value, socklen_t* size) noexcept {
  const long result = ::syscall(SYS_getsockopt, socket, level, name, value, size);
  if (result == 0 && name == SO_PEERCRED && SystemCalls::peerUser >= 0) {
    static_cast<ucred*>(value)->uid = static_cast<uid_t>(SystemCalls::peerUser.load());
  }
  return static_cast<int>(result);
}

int accept4(int socket, sockaddr* address, socklen_t* size, int flags) {
  if (SystemCalls::failingAccepts > 0) {
    --SystemCalls::failingAccepts;
    errno = SystemCalls::acceptFailure;
    return -1;
  }
  return static_cast<int>(::syscall(SYS_accept4, socket, address, size, flags));
}

}  // extern "C"
