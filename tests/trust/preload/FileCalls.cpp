// Stands between a program and the system: counts the calls on files below the home, strikes those
// that the plan names and records the others, each with its initial, descriptor, path and data, all
// ended by a NUL. What a call that is not among these writes would miss in the record.

#include <linux/fcntl.h>  // <fcntl.h> declares open() with further arguments of any type
#include <signal.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <string_view>

#include "tests/trust/FileCallPlan.h"

namespace quenlet {
namespace {

std::mutex oneAtATime;  // so that the record's order is the calls' own
std::array<std::atomic<bool>, 65536> opened;

int openBesidePlan(const std::string& suffix, int flags) {
  const std::string path = std::getenv("QUENLET_TRUST_PLAN") + suffix;
  return ::syscall(SYS_openat, AT_FDCWD, path.c_str(), flags);
}

// `data` is as large as `size` says, or ends in a NUL when that is -1.
template <typename... Arguments>
int pass(char call, int descriptor, const char* path, const char* data, int size, long number,
         Arguments... given) {
  static const std::string home = std::getenv("HOME");
  static const int record = openBesidePlan(".record", O_WRONLY | O_APPEND | O_CLOEXEC);
  static auto& plan =
      *static_cast<FileCallPlan*>(::mmap(nullptr, sizeof(FileCallPlan), PROT_READ | PROT_WRITE,
                                         MAP_SHARED, openBesidePlan("", O_RDWR | O_CLOEXEC), 0));
  std::array<long, 5> a{long(given)...};
  const bool isBelow =
      descriptor < 0 ? std::string_view(path).starts_with(home) : opened.at(descriptor).load();
  if (!isBelow) return static_cast<int>(::syscall(number, a[0], a[1], a[2], a[3], a[4]));
  const std::lock_guard lock(oneAtATime);
  const int behind = ++plan.calls - plan.first;
  const bool isLater = behind > 0 && plan.lasting && (plan.fate != EINTR || behind % 2 == 0);
  const int fate = behind == 0 || isLater ? plan.fate.load() : 0;
  const bool fails = fate > 0;
  if (fate == FileCallPlan::kills) ::kill(::getpid(), SIGKILL);
  if (fate == FileCallPlan::fallsShort && (call == 'w' || call == 'i') && a[2] > 1) a[2] /= 2;
  int result = !fails || call == 'c' ? ::syscall(number, a[0], a[1], a[2], a[3], a[4]) : -1;
  if (call == 'o' && result >= 0) opened.at(descriptor = result) = true;
  if (call == 'c') opened.at(descriptor) = false;  // what fails to close is closed
  if (call == 'w') size = result;
  if (!fails && result >= 0) {
    ::dprintf(record, "%c%c%d%c%s%c%.*s%c", call, 0, descriptor, 0, path, 0, size, data, 0);
  }
  if (fails) errno = fate;
  return fails ? -1 : result;
}

}  // namespace
}  // namespace quenlet

using quenlet::pass;

extern "C" {

// What open() is with file offsets of 64 bits.
int open64(const char* path, int flags, int mode) {
  return pass('o', -1, path, "", 0, SYS_openat, AT_FDCWD, path, flags, mode);
}
ssize_t read(int descriptor, void* room, size_t size) {
  return pass('i', descriptor, "", "", 0, SYS_read, descriptor, room, size);
}
ssize_t write(int descriptor, const void* bytes, size_t size) {
  return pass('w', descriptor, "", static_cast<const char*>(bytes), size, SYS_write, descriptor,
              bytes, size);
}
int fsync(int descriptor) { return pass('s', descriptor, "", "", 0, SYS_fsync, descriptor); }
int close(int descriptor) { return pass('c', descriptor, "", "", 0, SYS_close, descriptor); }
int rename(const char* from, const char* to) noexcept {
  return pass('r', -1, from, to, -1, SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0);
}
int mkdir(const char* path, mode_t mode) noexcept {
  return pass('m', -1, path, "", 0, SYS_mkdirat, AT_FDCWD, path, mode);
}
int linkat(int in, const char* from, int to, const char* path, int flags) noexcept {
  return pass('l', -1, path, "", 0, SYS_linkat, in, from, to, path, flags);
}
int unlink(const char* path) noexcept {
  return pass('u', -1, path, "", 0, SYS_unlinkat, AT_FDCWD, path, 0);
}

}  // extern "C"
