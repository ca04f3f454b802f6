#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quenlet {

// Ends the benchmarks with a message: figures without one of the parts would mislead.
[[noreturn]] void failBenchmark(const std::string& problem);

// A program that runs beside the benchmark, its output thrown away, until this object ends. Runs on
// the cores of the thread that starts it.
class ChildProcess final {
 public:
  // `command` is the program's path and its arguments; `environment` holds "NAME=value" texts that
  // come before those of this process.
  ChildProcess(const std::vector<std::string>& command,
               const std::vector<std::string>& environment = {});
  // Runs `main` in a fork of this process.
  explicit ChildProcess(const std::function<void()>& main);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // The proportional share of the memory it uses.
  [[nodiscard]] std::uint64_t pssInBytes() const;
  // The memory that it alone has and has written to.
  [[nodiscard]] std::uint64_t privateDirtyInBytes() const;
  // The most memory that it has had since the last forgetPeak().
  [[nodiscard]] std::uint64_t peakInBytes() const;
  void forgetPeak() const;
  // The voluntary context switches of its threads, since they began.
  [[nodiscard]] std::uint64_t contextSwitches() const;
  [[nodiscard]] std::size_t threads() const;

 private:
  pid_t pid = -1;
};

// Keeps the calling thread, and what it starts, on one core for a scope, so that the placing of two
// communicating processes does not enter the figures.
class OnOneCore final {
 public:
  OnOneCore();
  ~OnOneCore();
  OnOneCore(const OnOneCore&) = delete;
  OnOneCore& operator=(const OnOneCore&) = delete;

 private:
  std::uint64_t coresBefore[16] = {};
};

}  // namespace quenlet
