#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quenlet {

// A program that runs beside the test, with its output in two files. It is killed when this goes.
// Use on one thread.
class ChildProcess final {
 public:
  // Variables that differ from the test's own; nothing takes one away.
  using Environment = std::map<std::string, std::optional<std::string>>;

  // `outputPath` with ".out" and ".err" appended names the files.
  ChildProcess(std::vector<std::string> command, const Environment& environment,
               const std::filesystem::path& outputPath);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  void signal(int number) const;
  // The exit status, or minus the signal that ended it. Fails the test, and gives back nothing,
  // when it has not ended after a minute.
  std::optional<int> wait();
  [[nodiscard]] bool isRunning();

  // What it has written so far.
  [[nodiscard]] std::string out() const;
  [[nodiscard]] std::string err() const;

 private:
  bool reap();

  const std::filesystem::path outPath;
  const std::filesystem::path errPath;
  pid_t pid = -1;
  std::optional<int> status;
};

[[nodiscard]] std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, const std::string& content);

void pauseBetweenLooks();

// Looks every few milliseconds whether `condition` holds, for a minute at most.
template <typename Condition>
[[nodiscard]] bool eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  do {
    if (condition()) return true;
    pauseBetweenLooks();
  } while (std::chrono::steady_clock::now() < deadline);
  return false;
}

}  // namespace quenlet
