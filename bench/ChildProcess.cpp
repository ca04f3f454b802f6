#include "bench/ChildProcess.h"

#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace quenlet {
namespace {

// The sum of the numbers behind every `key` at the start of a line.
std::uint64_t sumOf(const std::filesystem::path& file, const std::string& key) {
  std::ifstream lines(file);
  std::uint64_t sum = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(key)) sum += std::strtoull(line.c_str() + key.size(), nullptr, 10);
  }
  return sum;
}

std::filesystem::path folderOf(pid_t pid) { return "/proc/" + std::to_string(pid); }

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

// A fork would copy this process's page tables, which would count as part of a launch.
pid_t spawn(std::vector<std::string> command, std::vector<std::string> environment) {
  for (char** variable = environ; *variable != nullptr; ++variable) {
    environment.emplace_back(*variable);
  }
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t pid = -1;
  const int failure = ::posix_spawnp(&pid, command[0].c_str(), &actions, nullptr,
                                     pointers(command).data(), pointers(environment).data());
  ::posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) failBenchmark("cannot start " + command[0]);
  return pid;
}

}  // namespace

void failBenchmark(const std::string& problem) {
  std::fprintf(stderr, "quenlet-bench: %s\n", problem.c_str());
  std::exit(1);
}

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const std::vector<std::string>& environment)
    : pid(spawn(command, environment)) {}

ChildProcess::ChildProcess(const std::function<void()>& main) : pid(::fork()) {
  if (pid == 0) {
    main();
    ::_exit(0);
  }
  if (pid < 0) failBenchmark("cannot fork");
}

ChildProcess::~ChildProcess() {
  ::kill(pid, SIGTERM);
  ::waitpid(pid, nullptr, 0);
}

std::uint64_t ChildProcess::pssInBytes() const {
  return sumOf(folderOf(pid) / "smaps_rollup", "Pss:") * 1024;
}

std::uint64_t ChildProcess::privateDirtyInBytes() const {
  return sumOf(folderOf(pid) / "smaps_rollup", "Private_Dirty:") * 1024;
}

std::uint64_t ChildProcess::peakInBytes() const {
  return sumOf(folderOf(pid) / "status", "VmHWM:") * 1024;
}

void ChildProcess::forgetPeak() const {
  if (!(std::ofstream(folderOf(pid) / "clear_refs") << "5" << std::flush)) {
    failBenchmark("the peak of memory cannot be reset");
  }
}

std::uint64_t ChildProcess::contextSwitches() const {
  std::uint64_t sum = 0;
  for (const auto& thread : std::filesystem::directory_iterator(folderOf(pid) / "task")) {
    sum += sumOf(thread.path() / "status", "voluntary_ctxt_switches:");
  }
  return sum;
}

std::size_t ChildProcess::threads() const { return sumOf(folderOf(pid) / "status", "Threads:"); }

OnOneCore::OnOneCore() {
  static_assert(sizeof coresBefore == sizeof(cpu_set_t));
  auto* before = reinterpret_cast<cpu_set_t*>(coresBefore);
  ::sched_getaffinity(0, sizeof coresBefore, before);
  int last = 0;
  for (int core = 0; core < CPU_SETSIZE; ++core) {
    if (CPU_ISSET(core, before)) last = core;
  }
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(last, &one);
  ::sched_setaffinity(0, sizeof one, &one);
}

OnOneCore::~OnOneCore() {
  ::sched_setaffinity(0, sizeof coresBefore, reinterpret_cast<const cpu_set_t*>(coresBefore));
}

}  // namespace quenlet
