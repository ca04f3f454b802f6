#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <filesystem>
#include <memory>

#include "platform/foundation/FileDescriptor.h"
#include "platform/scheduling/EventLoop.h"
#include "quenlet/Result.h"

namespace quenlet {

// A donor's running program. It has its own session and process group, a connected socket as its
// standard input, and inherits nothing but the environment from the agent. It is reaped, unless the
// kernel cannot end it within a second, and the rest of its process group is killed with it. On the
// loop's thread only.
class ExtensionProcess final {
 public:
  // Starts `executable` with `socket` as its standard input. `onEnd` is called once, when the
  // program has ended by itself or by kill(); it may destroy this object. `openFiles` is the
  // program's soft limit of open files, 0 to inherit the agent's. Fails when the program cannot be
  // trusted (see TrustedProgram.h) or executed.
  [[nodiscard]] static Result<std::unique_ptr<ExtensionProcess>> start(
      const std::filesystem::path& executable, FileDescriptor socket, rlim_t openFiles,
      EventLoop& eventLoop, Block onEnd);
  // Kills the program if it still runs, and waits for its end for up to a second.
  ~ExtensionProcess();
  ExtensionProcess(const ExtensionProcess&) = delete;
  ExtensionProcess& operator=(const ExtensionProcess&) = delete;

  // Sends SIGKILL to the process group.
  void kill();

 private:
  explicit ExtensionProcess(pid_t started) : process(started) {}
  [[nodiscard]] ErrorPtr watchEnd(EventLoop& eventLoop, Block onEnd);
  void ended();
  void reap();

  // 0 once it is reaped.
  pid_t process;
  FileDescriptor pidDescriptor;
  std::shared_ptr<EventLoop::Watch> watch;
  Block endHandler;
};

}  // namespace quenlet
