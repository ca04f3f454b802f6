#include "platform/extensions/ExtensionProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

#include "platform/files/TrustedProgram.h"

namespace quenlet {
namespace {

using Started = Result<std::unique_ptr<ExtensionProcess>>;

// Starts a program. After the first failed step the others are skipped.
class SpawnSettings final {
 public:
  SpawnSettings() {
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawnattr_init(&attributes);
  }
  ~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&actions);
    ::posix_spawnattr_destroy(&attributes);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  // Returns 0 or the error number.
  int spawn(std::string path, int socket, pid_t& process) {
    setDescriptors(socket);
    setAttributes();
    char* arguments[] = {path.data(), nullptr};
    step(::posix_spawn, &process, path.c_str(), &actions, &attributes, arguments, environ);
    return failure;
  }

 private:
  template <typename Function, typename... Arguments>
  void step(Function function, Arguments... arguments) {
    if (failure == 0) failure = function(arguments...);
  }

  void setDescriptors(int socket) {
    step(::posix_spawn_file_actions_adddup2, &actions, socket, STDIN_FILENO);
    step(::posix_spawn_file_actions_addopen, &actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    step(::posix_spawn_file_actions_addopen, &actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    step(::posix_spawn_file_actions_addclosefrom_np, &actions, STDERR_FILENO + 1);
    step(::posix_spawn_file_actions_addchdir_np, &actions, "/");
  }

  // The agent blocks or ignores signals that programs rely on, and a child would inherit that.
  void setAttributes() {
    sigset_t none;
    sigset_t all;
    ::sigemptyset(&none);
    ::sigfillset(&all);
    step(::posix_spawnattr_setsigmask, &attributes, &none);
    step(::posix_spawnattr_setsigdefault, &attributes, &all);
    // A session leader cannot leave its process group, so kill() always reaches it.
    step(::posix_spawnattr_setflags, &attributes,
         static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID));
  }

  int failure = 0;
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
};

// The agent has raised its own soft limit, which breaks programs that use select(). posix_spawn()
// cannot set limits, so the program runs for an instant with the agent's.
void setOpenFilesLimit(pid_t process, rlim_t openFiles) {
  rlimit limit{};
  if (openFiles == 0 || ::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = std::min(openFiles, limit.rlim_max);
  ::prlimit(process, RLIMIT_NOFILE, &limit, nullptr);
}

}  // namespace

Started ExtensionProcess::start(const std::filesystem::path& executable, FileDescriptor socket,
                                rlim_t openFiles, EventLoop& eventLoop, Block onEnd) {
  const Result<std::filesystem::path> program = trustedProgram(executable);
  if (!program.ok()) return Started::failure(program.error());
  pid_t started = 0;
  if (const int failure = SpawnSettings().spawn(program.value(), socket.get(), started)) {
    return Started::failure(makePosixError(failure, "start the program"));
  }
  setOpenFilesLimit(started, openFiles);
  std::unique_ptr<ExtensionProcess> process(new ExtensionProcess(started));
  if (ErrorPtr error = process->watchEnd(eventLoop, std::move(onEnd))) {
    return Started::failure(std::move(error));
  }
  return Started::success(std::move(process));
}

ErrorPtr ExtensionProcess::watchEnd(EventLoop& eventLoop, Block onEnd) {
  pidDescriptor.reset(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
  if (!pidDescriptor.isOpen()) return makePosixError(errno, "watch the program");
  endHandler = std::move(onEnd);
  // If the loop cannot watch the descriptor, it reports an event too, and ended() kills the
  // program.
  watch = eventLoop.watch(pidDescriptor.get(), EPOLLIN, [this](std::uint32_t) { ended(); });
  return nullptr;
}

ExtensionProcess::~ExtensionProcess() {
  if (watch) watch->cancel();
  reap();
}

void ExtensionProcess::kill() {
  if (process != 0) ::kill(-process, SIGKILL);
}

void ExtensionProcess::ended() {
  watch->cancel();
  reap();
  if (const Block handler = std::exchange(endHandler, nullptr)) handler();
}

// Until waitpid() has returned the process, its number and its group's cannot be reused: kill()
// hits nobody else. A process in an uninterruptible wait is given up after a second, and reaped by
// whichever process adopts it.
void ExtensionProcess::reap() {
  if (process == 0) return;
  kill();
  constexpr int turns = 50;
  constexpr int turnInMilliseconds = 20;
  pollfd watched{pidDescriptor.get(), POLLIN, 0};  // without a descriptor, a mere pause
  for (int i = 0; i < turns && ::waitpid(process, nullptr, WNOHANG) == 0; ++i) {
    ::poll(&watched, 1, turnInMilliseconds);
  }
  process = 0;
}

}  // namespace quenlet
