#include "platform/extensions/ExtensionProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "platform/files/TrustedDirectory.h"

namespace quenlet {
namespace {

using Started = Result<std::unique_ptr<ExtensionProcess>>;

// How a program is started. Each step is skipped once one has failed.
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

  // 0 or the number of the error.
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

  // The agent blocks and ignores signals that a program expects to have.
  void setAttributes() {
    sigset_t none;
    sigset_t all;
    ::sigemptyset(&none);
    ::sigfillset(&all);
    step(::posix_spawnattr_setsigmask, &attributes, &none);
    step(::posix_spawnattr_setsigdefault, &attributes, &all);
    // The leader of a session cannot leave its process group.
    step(::posix_spawnattr_setflags, &attributes,
         static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID));
  }

  int failure = 0;
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
};

// Links are followed first, so that the file that was looked at is the one that is started: nobody
// else can put another one into its directory.
Result<std::filesystem::path> trustedProgram(const std::filesystem::path& executable) {
  using Program = Result<std::filesystem::path>;
  std::error_code failure;
  std::filesystem::path program = std::filesystem::canonical(executable, failure);
  if (failure) return Program::right(makePosixError(failure.value(), "find the program"));
  const Result<TrustedDirectory> directory = TrustedDirectory::open(program.parent_path());
  if (!directory.isLeft()) {
    return Program::right(makeError(PosixErrorDomain, directory.right()->code(),
                                    "its directory: " + directory.right()->debugDescription()));
  }
  if (ErrorPtr error = directory.left().examineFile(program.filename().native())) {
    return Program::right(std::move(error));
  }
  return Program::left(std::move(program));
}

}  // namespace

Started ExtensionProcess::start(const std::filesystem::path& executable, FileDescriptor socket,
                                EventLoop& eventLoop, Block onEnd) {
  const Result<std::filesystem::path> program = trustedProgram(executable);
  if (!program.isLeft()) return Started::right(program.right());
  pid_t started = 0;
  if (const int failure = SpawnSettings().spawn(program.left(), socket.get(), started)) {
    return Started::right(makePosixError(failure, "start the program"));
  }
  std::unique_ptr<ExtensionProcess> process(new ExtensionProcess(started));
  if (ErrorPtr error = process->watchEnd(eventLoop, std::move(onEnd))) {
    return Started::right(std::move(error));
  }
  return Started::left(std::move(process));
}

ErrorPtr ExtensionProcess::watchEnd(EventLoop& eventLoop, Block onEnd) {
  pidDescriptor.reset(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
  if (!pidDescriptor.isOpen()) return makePosixError(errno, "watch the program");
  endHandler = std::move(onEnd);
  // Should the descriptor not be watchable, that is told in the same way, and the program killed.
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

// As long as the process is not waited for, nothing else can get its number or that of its group.
void ExtensionProcess::reap() {
  if (process == 0) return;
  kill();
  while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
  }
  process = 0;
}

}  // namespace quenlet
