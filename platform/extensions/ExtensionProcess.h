#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <filesystem>
#include <memory>

#include "platform/foundation/Either.h"
#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {

// A running program of a donor. It has a session and process group of its own, a connected socket
// as its standard input and nothing else of the agent's but the environment. It is reaped, unless
// the kernel cannot end it within a second, and what is left of its process group dies with it. On
// the loop's thread only.
class ExtensionProcess final {
 public:
  // Starts `executable` with `socket` as its standard input. `onEnd` is called once, when the
  // program has ended by itself or by kill(); it may destroy this object. `openFiles` is the soft
  // limit of its open files, 0 for the agent's. Fails when the program cannot be trusted (see
  // TrustedProgram.h) or executed.
  [[nodiscard]] static Result<std::unique_ptr<ExtensionProcess>> start(
      const std::filesystem::path& executable, FileDescriptor socket, rlim_t openFiles,
      EventLoop& eventLoop, Block onEnd);
  // Kills the program, unless it has ended, and waits for its end, a second at most.
  ~ExtensionProcess();
  ExtensionProcess(const ExtensionProcess&) = delete;
  ExtensionProcess& operator=(const ExtensionProcess&) = delete;

  // Ends the process group at once.
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
