#include "foreign/OutsideCommand.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "platform/foundation/FileDescriptor.h"

namespace quenlet {
namespace {

using Deadline = std::chrono::steady_clock::time_point;

constexpr std::size_t mostBytes = std::size_t{64} << 10;

// The process that runs the command with `output` as its standard output; 0 when it cannot.
pid_t spawn(std::vector<std::string>& command, const FileDescriptor& output) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (std::string& word : command) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  if (::posix_spawn_file_actions_init(&actions) != 0) return 0;
  pid_t process = 0;
  const bool isReady =
      ::posix_spawn_file_actions_addchdir_np(&actions, "/") == 0 &&
      ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0) == 0 &&
      ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0) == 0 &&
      ::posix_spawn_file_actions_adddup2(&actions, output.get(), STDOUT_FILENO) == 0;
  const bool runs = isReady && ::posix_spawnp(&process, arguments.front(), &actions, nullptr,
                                              arguments.data(), environ) == 0;
  ::posix_spawn_file_actions_destroy(&actions);
  return runs ? process : 0;
}

// Whether `file` has something to read, or its end, before the deadline.
bool isReadable(const FileDescriptor& file, Deadline deadline) {
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
  pollfd look{file.get(), POLLIN, 0};
  int ready = -1;
  if (left.count() > 0) {
    while ((ready = ::poll(&look, 1, static_cast<int>(left.count()))) < 0 && errno == EINTR) {
    }
  }
  return ready > 0;
}

// Until the other end is closed; nothing when that takes too long, or too much comes.
std::optional<std::string> readAll(const FileDescriptor& input, Deadline deadline) {
  std::string text;
  std::array<char, 4096> block;
  while (text.size() <= mostBytes && isReadable(input, deadline)) {
    const ssize_t count = ::read(input.get(), block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return text;
    text.append(block.data(), static_cast<std::size_t>(count));
  }
  return std::nullopt;
}

// Its exit status, or minus the signal that ended it; ends it when it goes on.
int statusOf(pid_t process, bool isToEnd) {
  if (isToEnd) ::kill(process, SIGKILL);
  int status = 0;
  while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace

std::optional<CommandEnd> endOf(std::vector<std::string> command, std::chrono::milliseconds limit) {
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  const FileDescriptor input(ends[0]);
  FileDescriptor output(ends[1]);
  const pid_t process = spawn(command, output);
  output = FileDescriptor();
  if (process == 0) return std::nullopt;
  const auto deadline = std::chrono::steady_clock::now() + limit;
  std::optional<std::string> text = readAll(input, deadline);
  // It may have closed its output and go on.
  const FileDescriptor life(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
  const bool hasEnded = text && life.isOpen() && isReadable(life, deadline);
  const int status = statusOf(process, !hasEnded);
  if (!hasEnded) return std::nullopt;
  if (text->ends_with('\n')) text->pop_back();
  return CommandEnd{*std::move(text), status};
}

std::optional<std::string> outputOf(std::vector<std::string> command,
                                    std::chrono::milliseconds limit) {
  auto end = endOf(std::move(command), limit);
  if (!end) return std::nullopt;
  return std::move(end->output);
}

}  // namespace quenlet
