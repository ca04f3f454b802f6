#pragma once

#include "tests/support/TemporaryDirectory.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quenlet {

inline void writeFile(const std::filesystem::path& path, const std::string& content) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  EXPECT_TRUE(file << content << std::flush) << path;
}

// Looks every few milliseconds whether `condition` holds, for a minute at most.
template <typename Condition>
[[nodiscard]] bool eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

// A program that runs beside the test, with its output in two files. It is killed when this goes.
// Use on one thread.
class ChildProcess final {
 public:
  // Variables that differ from the test's own.
  using Environment = std::map<std::string, std::string>;

  // `outputPath` with ".out" and ".err" appended names the files.
  ChildProcess(std::vector<std::string> command, const Environment& environment,
               const std::string& outputPath)
      : outPath(outputPath + ".out"), errPath(outputPath + ".err"), pid(::fork()) {
    if (pid == 0) runInstead(command, environment);
    EXPECT_GT(pid, 0) << command.front();
  }
  ~ChildProcess() {
    if (!isRunning()) return;
    signal(SIGKILL);
    wait();
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  void signal(int number) const {
    if (pid > 0 && !status) ::kill(pid, number);
  }
  // The exit status, or minus the signal that ended it. Fails the test, and gives back nothing,
  // when it has not ended after a minute.
  std::optional<int> wait() {
    EXPECT_TRUE(eventually([this] { return !isRunning(); })) << "process " << pid << " goes on";
    return status;
  }
  [[nodiscard]] bool isRunning() {
    int result = 0;
    if (!status && ::waitpid(pid, &result, WNOHANG) == pid) {
      status = WIFEXITED(result) ? WEXITSTATUS(result) : -WTERMSIG(result);
    }
    return pid > 0 && !status;
  }

  [[nodiscard]] std::filesystem::path processDirectory() const {
    return std::filesystem::path("/proc") / std::to_string(pid);
  }
  // What it has written so far.
  [[nodiscard]] std::string out() const { return readFile(outPath); }
  [[nodiscard]] std::string err() const { return readFile(errPath); }

 private:
  // Never returns: 127 when the program cannot be run.
  [[noreturn]] void runInstead(std::vector<std::string>& command, const Environment& environment) {
    for (const auto& [name, value] : environment) ::setenv(name.c_str(), value.c_str(), 1);
    std::vector<char*> arguments;
    for (std::string& word : command) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    constexpr int writing = O_WRONLY | O_CREAT | O_APPEND;
    if (::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO) >= 0 &&
        ::dup2(::open(outPath.c_str(), writing, 0600), STDOUT_FILENO) >= 0 &&
        ::dup2(::open(errPath.c_str(), writing, 0600), STDERR_FILENO) >= 0) {
      ::execvp(arguments.front(), arguments.data());
    }
    ::_exit(127);
  }

  const std::string outPath;
  const std::string errPath;
  const pid_t pid;
  std::optional<int> status;
};

}  // namespace quenlet
