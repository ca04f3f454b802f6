#include "tools/owner/OutsideCommand.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/foundation/FileDescriptor.h"

namespace quenlet {
namespace {

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
      ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0) == 0 &&
      ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0) == 0 &&
      ::posix_spawn_file_actions_adddup2(&actions, output.get(), STDOUT_FILENO) == 0;
  const bool runs = isReady && ::posix_spawnp(&process, arguments.front(), &actions, nullptr,
                                              arguments.data(), environ) == 0;
  ::posix_spawn_file_actions_destroy(&actions);
  return runs ? process : 0;
}

// Until the other end is closed; nothing when that takes too long, or too much comes.
std::optional<std::string> readAll(const FileDescriptor& input, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  std::string text;
  std::array<char, 4096> block;
  while (text.size() <= mostBytes) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd look{input.get(), POLLIN, 0};
    if (left.count() <= 0 || ::poll(&look, 1, static_cast<int>(left.count())) == 0) break;
    const ssize_t count = ::read(input.get(), block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return text;
    text.append(block.data(), static_cast<std::size_t>(count));
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> outputOf(std::vector<std::string> command,
                                    std::chrono::milliseconds limit) {
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  const FileDescriptor input(ends[0]);
  FileDescriptor output(ends[1]);
  const pid_t process = spawn(command, output);
  output = FileDescriptor();
  if (process == 0) return std::nullopt;
  std::optional<std::string> text = readAll(input, limit);
  // Also one that closed its output and goes on: nobody is to wait for it.
  ::kill(process, SIGKILL);
  while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
  }
  if (text && text->ends_with('\n')) text->pop_back();
  return text;
}

}  // namespace quenlet
