#include "tests/process/ChildProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

namespace quenlet {
namespace {

std::vector<std::string> variables(const ChildProcess::Environment& environment) {
  std::vector<std::string> result;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (!environment.contains(text.substr(0, text.find('=')))) result.push_back(text);
  }
  for (const auto& [name, value] : environment) {
    if (value) result.push_back(name + "=" + *value);
  }
  return result;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

std::filesystem::path with(const std::filesystem::path& path, const char* extension) {
  return path.string() + extension;
}

}  // namespace

ChildProcess::ChildProcess(std::vector<std::string> command, const Environment& environment,
                           const std::filesystem::path& outputPath)
    : outPath(with(outputPath, ".out")), errPath(with(outputPath, ".err")) {
  posix_spawn_file_actions_t files;
  ::posix_spawn_file_actions_init(&files);
  constexpr int writing = O_WRONLY | O_CREAT | O_TRUNC | O_APPEND;
  ::posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  ::posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, outPath.c_str(), writing, 0600);
  ::posix_spawn_file_actions_addopen(&files, STDERR_FILENO, errPath.c_str(), writing, 0600);
  std::vector<std::string> entries = variables(environment);
  EXPECT_EQ(::posix_spawnp(&pid, command.front().c_str(), &files, nullptr, pointers(command).data(),
                           pointers(entries).data()),
            0)
      << command.front();
  ::posix_spawn_file_actions_destroy(&files);
}

ChildProcess::~ChildProcess() {
  if (!isRunning()) return;
  signal(SIGKILL);
  wait();
}

void ChildProcess::signal(int number) const {
  if (!status) ::kill(pid, number);
}

std::optional<int> ChildProcess::wait() {
  EXPECT_TRUE(eventually([this] { return reap(); })) << "process " << pid << " goes on";
  return status;
}

bool ChildProcess::isRunning() { return !reap(); }

bool ChildProcess::reap() {
  int result = 0;
  if (!status && ::waitpid(pid, &result, WNOHANG) == pid) {
    status = WIFEXITED(result) ? WEXITSTATUS(result) : -WTERMSIG(result);
  }
  return status.has_value();
}

std::string ChildProcess::out() const { return readFile(outPath); }

std::string ChildProcess::err() const { return readFile(errPath); }

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const std::filesystem::path& path, const std::string& content) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  EXPECT_TRUE(file << content << std::flush) << path;
}

void pauseBetweenLooks() { std::this_thread::sleep_for(std::chrono::milliseconds(10)); }

}  // namespace quenlet
